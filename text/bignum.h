// Big numbers of the digit generator: non-negative integers in 32-bit digits, on free lists by size.
//
// All of this is process-wide state under the lock of the formatted print. Memory for a number comes from malloc and
// is not tested: numbers are reused, so that a running process asks for none. What the lists and the cache hold
// stays to the end of the process.
#ifndef TEXT_BIGNUM_H
#define TEXT_BIGNUM_H

#include <cstdint>

namespace qzvest {

// The digits, lowest first, lie behind the record; zero has none.
struct Bignum {
    Bignum *next;       // on a free list, or in the cache of powers of five
    uint32_t sizeClass; // class k has room for 2 to the k digits
    uint32_t count;     // digits in use; the highest is not 0

    uint32_t *Digits()
    {
        return reinterpret_cast<uint32_t *>(this + 1);
    }
    const uint32_t *Digits() const
    {
        return reinterpret_cast<const uint32_t *>(this + 1);
    }
};

constexpr uint32_t kBignumClasses = 16;

// A number of the class, its digits not set; NULL for a class that does not exist.
Bignum *BignumAcquire(uint32_t sizeClass);

// Back to its free list; NULL is nothing to do.
void BignumRelease(Bignum *number);

Bignum *BignumFrom(uint64_t value);

uint32_t BignumBits(const Bignum *number);

// Negative, 0 or positive as first is below, equal to or above second.
int BignumCompare(const Bignum *first, const Bignum *second);

// These consume the number they are given and give the result, which may be the same one.
Bignum *BignumMultiplyAdd(Bignum *number, uint32_t factor, uint32_t addend);
Bignum *BignumShiftLeft(Bignum *number, uint32_t bits);
Bignum *BignumTimesPowerOf5(Bignum *number, uint32_t exponent);

// One step of a division: gives the quotient and leaves the remainder in dividend. The highest bit of divisor's highest
// digit is set, and the quotient is at most 10^9.
uint32_t BignumQuotientStep(Bignum *&dividend, const Bignum *divisor);

} // namespace qzvest

#endif
