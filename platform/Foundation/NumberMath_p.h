#pragma once

#include <ToviFoundationKit/Runtime/NSNumber.h>

namespace tovi::detail {

// Arithmetic on numbers of any type. Integers stay integers as long as they and the result fit into a signed one of 64
// bits; otherwise the result is a real number.

Ref<NSNumber> sum(const NSNumber& a, const NSNumber& b);
Ref<NSNumber> difference(const NSNumber& a, const NSNumber& b);
Ref<NSNumber> product(const NSNumber& a, const NSNumber& b);
/// Integers are divided as such, toward 0; by 0 as real numbers.
Ref<NSNumber> quotient(const NSNumber& a, const NSNumber& b);
Ref<NSNumber> remainder(const NSNumber& a, const NSNumber& b);
Ref<NSNumber> power(const NSNumber& base, const NSNumber& exponent);
Ref<NSNumber> magnitude(const NSNumber& number);

inline bool isReal(const NSNumber& number) noexcept { return *number.objCType() == 'd' || *number.objCType() == 'f'; }

// Of the numbers in a collection; nil and NSNull are passed over, anything else raises NSInvalidArgumentException.

Ref<NSNumber> sumOf(const NSObject& collection);
Ref<NSNumber> averageOf(const NSObject& collection);  ///< 0 without numbers

/// The least (sign -1) or greatest (sign 1) of the objects in a collection, by `compare:`; nil without any.
id extremeOf(const NSObject& collection, NSInteger sign);

/// The object as a number; raises NSInvalidArgumentException when it is none.
const NSNumber& numberIn(const NSObject& object);
/// Whether the object stands for nothing.
bool isNull(const NSObject* object) noexcept;

}  // namespace tovi::detail
