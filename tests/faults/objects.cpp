// The heap, lists, the tree, IDs, sums, self-describing objects.

#include "faults/rows.h"

namespace {

template <typename Entry>
int32_t CompareEntries(void *key, Entry *entry)
{
    return CompareNumbers(key, entry->data);
}

const auto kGoOn = [](auto...) { return SM_STATUS_OK; };

#define ADD(failures, ...) EXPR(failures, SMSDOConfigAddData, Add(t.object, __VA_ARGS__))
#define ADOPT(...) EXPR("M", SMSDOConfigAddData, Adopt(t.object, __VA_ARGS__))
#define SET(...) MADE("BFM", SMSDOBinarySetData, t.flat.data(), &t.size, __VA_ARGS__).Shows(kChanged)

} // namespace

Rows RowsOfObjects()
{
    return Table(
        MADE("M", SMAllocMem, 8), MADE("M", SMReAllocMem, nullptr, 8), MADE("M", SMSLListAlloc),
        MADE("M", SMSLListEntryAlloc, 3), MADE("M", SMDLListAlloc), MADE("M", SMDLListEntryAlloc, 3),
        MADE("M", SMRedBlackTreeDataInsert, &t.tree, t.numbers + 2, t.numbers + 2, CompareNumbers).Shows("1 2 3"),
        MADE("M", SMSDOConfigAlloc), ADD("M", 9, 1, Block("99")).Shows("0900"),
        ADD("M", 2, 1, Block("99"), 1).Shows(kChanged), ADD("FM", 9, 0x0C, Block(kFlat)).Shows("0900"),
        ADD("FM", 9, 0x0C, Block(kArray)).Shows("0900"), ADOPT(9, 0x0D, {&t.nested}).Shows("0900"),
        ADOPT(3, 0x0D, {&t.nested}, 1).Shows(kChanged), ADOPT(9, 0x1D, {&t.nested, &t.other}).Shows("0900"),
        MADE("F", SMSDOConfigToBinary, t.object.get(), t.room, &t.size), MADE("M", SMSDOBinaryToConfig, t.flat.data()),
        MADE("M", SMSDOConfigClone, t.object.get()),
        EXPR("M", SMSDOConfigCompareByValue, Given(SMSDOConfigCompareByValue(t.object.get(), t.object.get()) == 1)),
        EXPR("FM", SMSDOConfigArrayToBinaryArray,
             SMSDOConfigArrayToBinaryArray(std::vector{t.object.get(), t.nested.get()}.data(), 2, t.room, &t.size)),
        MADE("FM", SMSDOBinaryArrayToConfigArray, Block(kArray).data(), t.rebuilt, &(t.size = 2)).Shows("rebuilt"),
        SET(1, 1, "longer", 6), SET(3, 0x0C, Block("'BODS 0000 0800").data(), 8), CALL(SMFreeMem, t.block.Out()),
        CALL(SMFreeGeneric, t.block.Out()), CALL(SMSLListFree, t.single.Out()), CALL(SMDLListFree, t.both.Out()),
        CALL(SMSLListEntryFree, t.singleOther.Out()), CALL(SMDLListEntryFree, t.bothOther.Out()),
        CALL(SMSLListInitNoAlloc, t.single), CALL(SMDLListInitNoAlloc, t.both),
        CALL(SMSLListEntryInitNoAlloc, t.singleOther), CALL(SMDLListEntryInitNoAlloc, t.bothOther),
        CALL(SMSLListInsertEntryAtHead, t.single, t.singleOther), CALL(SMDLListInsertEntryAtHead, t.both, t.bothOther),
        CALL(SMSLListInsertEntryAtTail, t.single, t.singleOther), CALL(SMDLListInsertEntryAtTail, t.both, t.bothOther),
        WELL(SMSLListInsertEntry, t.single, t.singleOther, t.numbers + 2, CompareEntries),
        WELL(SMDLListInsertEntry, t.both, t.bothOther, t.numbers + 2, CompareEntries),
        CALL(SMSLListDeleteEntry, t.single, nullptr, t.singleEntry), CALL(SMDLListDeleteEntry, t.both, t.bothEntry),
        CALL(SMSLListRemoveEntryAtHead, t.single), CALL(SMDLListRemoveEntryAtHead, t.both),
        CALL(SMSLListRemoveEntryAtTail, t.single), CALL(SMDLListRemoveEntryAtTail, t.both),
        CALL(SMSLListReplaceEntry, t.single, t.singleOther, t.numbers, CompareEntries),
        CALL(SMDLListReplaceEntry, t.both, t.bothOther, t.numbers, CompareEntries),
        CALL(SMSLListWalkAtHead, t.single, t.numbers, CompareEntries),
        CALL(SMDLListWalkAtHead, t.both, t.numbers, CompareEntries),
        CALL(SMDLListWalkAtTail, t.both, t.numbers, CompareEntries), CALL(SMSLListIsEmpty, t.single),
        CALL(SMDLListIsEmpty, t.both), CALL(SMRedBlackTreeAttach, std::make_unique<SMRedBlackTree>().get()),
        CALL(SMRedBlackTreeDetach, std::make_unique<SMRedBlackTree>().get()), CALL(SMRedBlackTreeIsEmpty, t.tree),
        CALL(SMRedBlackTreeDataReplace, &t.tree, t.numbers, t.numbers, CompareNumbers),
        WELL(SMRedBlackTreeDataDelete, &t.tree, t.numbers, CompareNumbers),
        CALL(SMRedBlackTreeDataWalk, t.tree, t.numbers, CompareNumbers, SM_RBT_WALK_ASCENDING),
        CALL(SMRedBlackTreeDelete, &t.tree, t.numbers, CompareNumbers), CALL(SMHashTableBytesNeeded, 100),
        WELL(SMClearHashTable, t.ids, 16), CALL(SMAcquireHashID, t.ids, 16, 0), WELL(SMAcquireHashIDByID, t.ids, 16, 7),
        WELL(SMVerifyHashID, t.ids, 16, 2), WELL(SMReleaseHashID, t.ids, 16, 2), CALL(SMGetMinInUseID, t.ids, 16),
        CALL(SMGetMaxInUseID, t.ids, 16), CALL(SMFindFirstHashID, t.ids, 16, &t.size, &t.index),
        CALL(SMFindNextHashID, t.ids, 16, &(t.size = 0), &t.index), WELL(SMBase64Encode, t.room, "abc", 3, nullptr),
        WELL(SMBase64Decode, t.room, "YWJj", 4), CALL(SMCRC32Compute_vn, "abc", 3), CALL(SMCRC32Compute_str, "abc"),
        CALL(SMCRC32Compute_strncase, "abc"), CALL(SMGenerateCRC32, "abc", 3, 8), CALL(SMRFC1321Load, &t.digest),
        CALL(SMRFC1321AddMsg, &t.digest, t.room, 200), CALL(SMRFC1321ComputeMsgDigest, &t.digest),
        CALL(SMRFC1321UnLoad, &t.digest), CALL(SMSDOConfigFree, t.object.release()),
        CALL(SMSDOConfigGetCount, t.object.get()), CALL(SMSDOConfigGetBinarySize, t.object.get()),
        CALL(SMSDOConfigReCalcBinarySize, t.object.get()),
        WELL(SMSDOConfigGetDataByID, t.object.get(), 1, &t.type, t.room, &t.size),
        WELL(SMSDOConfigGetDataByIndex, t.object.get(), 1, &t.id, &t.type, t.room, &t.size),
        WELL(SMSDOConfigRemoveData, t.object.get(), 1, 0, 0), CALL(SMSDOBinaryGetCount, t.flat.data(), nullptr),
        CALL(SMSDOBinaryGetSize, t.flat.data(), nullptr),
        WELL(SMSDOBinaryGetDataByID, t.flat.data(), 1, &t.type, t.room, &t.size),
        WELL(SMSDOBinaryGetDataByIndex, t.flat.data(), 1, &t.id, &t.type, t.room, &t.size),
        WELL(SMSDOBinaryWalk, t.flat.data(), nullptr, kGoOn, kGoOn, nullptr, nullptr, 1),
        WELL(SMSDOBinaryArrayInitHeader, t.array.data(), 200),
        WELL(SMSDOBinaryArrayAddData, t.array.data(), &t.size, Block(kFlat).data(), 16),
        WELL(SMSDOBinaryArrayGetByIndex, t.array.data(), 200, 0, t.room, &t.size));
}
