#include "text/bignum.h"

#include <bit>
#include <cstdlib>
#include <cstring>

namespace qzvest {
namespace {

constexpr uint32_t kDigitBits = 32;

// Both are under the print's lock.

// By class: what was released and waits for its next use.
Bignum *freeLists[kBignumClasses];

// 625, and then each the square of the one before.
Bignum *powersOfFive;

uint32_t Capacity(const Bignum *number)
{
    return uint32_t{1} << number->sizeClass;
}

uint32_t ClassFor(uint32_t digits)
{
    uint32_t sizeClass = 0;
    while ((uint32_t{1} << sizeClass) < digits)
        ++sizeClass;
    return sizeClass;
}

void Trim(Bignum *number)
{
    while (number->count > 0 && number->Digits()[number->count - 1] == 0)
        --number->count;
}

void AppendDigit(Bignum *&number, uint32_t digit)
{
    if (number->count == Capacity(number)) {
        Bignum *larger = BignumAcquire(number->sizeClass + 1);
        larger->count = number->count;
        std::memcpy(larger->Digits(), number->Digits(), number->count * sizeof(uint32_t));
        BignumRelease(number);
        number = larger;
    }
    number->Digits()[number->count++] = digit;
}

Bignum *Multiply(const Bignum *first, const Bignum *second)
{
    const uint32_t count = first->count + second->count;
    Bignum *product = BignumAcquire(ClassFor(count));
    product->count = count;
    uint32_t *digits = product->Digits();
    std::memset(digits, 0, count * sizeof *digits);
    for (uint32_t i = 0; i < first->count; ++i) {
        const uint64_t factor = first->Digits()[i];
        uint64_t carry = 0;
        for (uint32_t j = 0; j < second->count; ++j) {
            carry += factor * second->Digits()[j] + digits[i + j];
            digits[i + j] = static_cast<uint32_t>(carry);
            carry >>= kDigitBits;
        }
        digits[i + second->count] = static_cast<uint32_t>(carry);
    }
    Trim(product);
    return product;
}

// dividend - factor * divisor in the digits of divisor and one more; gives what had to be borrowed beyond them.
uint32_t SubtractMultiple(uint32_t *dividend, const Bignum *divisor, uint32_t factor)
{
    const uint32_t count = divisor->count;
    uint64_t carry = 0;
    uint64_t borrow = 0;
    for (uint32_t i = 0; i < count; ++i) {
        carry += static_cast<uint64_t>(factor) * divisor->Digits()[i];
        const uint64_t difference = uint64_t{dividend[i]} - static_cast<uint32_t>(carry) - borrow;
        dividend[i] = static_cast<uint32_t>(difference);
        borrow = difference >> 63;
        carry >>= kDigitBits;
    }
    const uint64_t difference = uint64_t{dividend[count]} - carry - borrow;
    dividend[count] = static_cast<uint32_t>(difference);
    return static_cast<uint32_t>(difference >> 63);
}

// The same area plus divisor; gives the carry beyond it.
uint32_t AddBack(uint32_t *dividend, const Bignum *divisor)
{
    const uint32_t count = divisor->count;
    uint64_t carry = 0;
    for (uint32_t i = 0; i < count; ++i) {
        carry += uint64_t{dividend[i]} + divisor->Digits()[i];
        dividend[i] = static_cast<uint32_t>(carry);
        carry >>= kDigitBits;
    }
    carry += dividend[count];
    dividend[count] = static_cast<uint32_t>(carry);
    return static_cast<uint32_t>(carry >> kDigitBits);
}

} // namespace

Bignum *BignumAcquire(uint32_t sizeClass)
{
    if (sizeClass >= kBignumClasses)
        return nullptr;
    Bignum *number = freeLists[sizeClass];
    if (number != nullptr) {
        freeLists[sizeClass] = number->next;
    } else {
        number = static_cast<Bignum *>(std::malloc(sizeof(Bignum) + (sizeof(uint32_t) << sizeClass)));
        number->sizeClass = sizeClass;
    }
    number->next = nullptr;
    number->count = 0;
    return number;
}

void BignumRelease(Bignum *number)
{
    if (number == nullptr)
        return;
    number->next = freeLists[number->sizeClass];
    freeLists[number->sizeClass] = number;
}

Bignum *BignumFrom(uint64_t value)
{
    Bignum *number = BignumAcquire(1);
    number->Digits()[0] = static_cast<uint32_t>(value);
    number->Digits()[1] = static_cast<uint32_t>(value >> kDigitBits);
    number->count = 2;
    Trim(number);
    return number;
}

uint32_t BignumBits(const Bignum *number)
{
    if (number->count == 0)
        return 0;
    const auto unused = static_cast<uint32_t>(std::countl_zero(number->Digits()[number->count - 1]));
    return number->count * kDigitBits - unused;
}

int BignumCompare(const Bignum *first, const Bignum *second)
{
    if (first->count != second->count)
        return first->count < second->count ? -1 : 1;
    for (uint32_t i = first->count; i-- > 0;)
        if (first->Digits()[i] != second->Digits()[i])
            return first->Digits()[i] < second->Digits()[i] ? -1 : 1;
    return 0;
}

Bignum *BignumMultiplyAdd(Bignum *number, uint32_t factor, uint32_t addend)
{
    uint64_t carry = addend;
    for (uint32_t i = 0; i < number->count; ++i) {
        carry += static_cast<uint64_t>(factor) * number->Digits()[i];
        number->Digits()[i] = static_cast<uint32_t>(carry);
        carry >>= kDigitBits;
    }
    if (carry != 0)
        AppendDigit(number, static_cast<uint32_t>(carry));
    return number;
}

Bignum *BignumShiftLeft(Bignum *number, uint32_t bits)
{
    if (number->count == 0 || bits == 0)
        return number;
    const uint32_t whole = bits / kDigitBits;
    const uint32_t rest = bits % kDigitBits;
    Bignum *shifted = BignumAcquire(ClassFor(number->count + whole + 1));
    uint32_t *digits = shifted->Digits();
    std::memset(digits, 0, whole * sizeof *digits);
    uint64_t carry = 0;
    for (uint32_t i = 0; i < number->count; ++i) {
        carry |= static_cast<uint64_t>(number->Digits()[i]) << rest;
        digits[whole + i] = static_cast<uint32_t>(carry);
        carry >>= kDigitBits;
    }
    digits[whole + number->count] = static_cast<uint32_t>(carry);
    shifted->count = number->count + whole + 1;
    Trim(shifted);
    BignumRelease(number);
    return shifted;
}

Bignum *BignumTimesPowerOf5(Bignum *number, uint32_t exponent)
{
    constexpr uint32_t kSmallPowers[] = {1, 5, 25, 125};
    if (exponent % 4 != 0)
        number = BignumMultiplyAdd(number, kSmallPowers[exponent % 4], 0);
    if (powersOfFive == nullptr)
        powersOfFive = BignumFrom(625);
    Bignum *power = powersOfFive;
    for (exponent /= 4; exponent != 0; exponent /= 2) {
        if (exponent % 2 != 0) {
            Bignum *product = Multiply(number, power);
            BignumRelease(number);
            number = product;
        }
        if (exponent > 1 && power->next == nullptr)
            power->next = Multiply(power, power);
        power = power->next;
    }
    return number;
}

// One step of the schoolbook's division, as in Knuth, The Art of Computer Programming, volume 2, 4.3.1, algorithm D.
uint32_t BignumQuotientStep(Bignum *&dividend, const Bignum *divisor)
{
    const uint32_t count = divisor->count;
    if (dividend->count < count)
        return 0;
    if (dividend->count == count)
        AppendDigit(dividend, 0);
    uint32_t *digits = dividend->Digits();
    const uint64_t top = static_cast<uint64_t>(digits[count]) << kDigitBits | digits[count - 1];
    // At most two too large, since the highest bit of divisor is set.
    auto quotient = static_cast<uint32_t>(top / divisor->Digits()[count - 1]);
    uint32_t borrowed = SubtractMultiple(digits, divisor, quotient);
    while (borrowed != 0) {
        --quotient;
        borrowed -= AddBack(digits, divisor);
    }
    Trim(dividend);
    return quotient;
}

} // namespace qzvest
