#pragma once

#include <string_view>

#include <ToviFoundationKit/Runtime/FormatArgument.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

/// Appends a format in which each conversion stands for an argument:
///
///     %[position$][flags][width][.precision][modifier]conversion
///
/// The formats of stringWithFormat, NSLog and NSException::raise are written in this language.
///
/// **Conversions**
///
///     @        an object's description; nil is "(null)"
///     s S      a text: UTF-8, UTF-16 or an object's description
///     d i D    a decimal integer           u U   the same without sign
///     x X o O  a hexadecimal or octal integer without sign
///     f F      1.500000                    e E   1.500000e+00
///     g G      whichever of the two is shorter
///     a A      0x1.8p+0, exactly
///     c C      a character, given as such or as its number
///     p        an address, 0x7f...
///     %        a percent sign, for no argument
///
/// **Flags**: `-` pads on the right, `0` pads numbers with zeros, `+` and space stand before numbers that are not
/// negative, `#` asks for 0x, 0 or the decimal point, `'` is skipped. The width is the least number of UTF-16 units;
/// the precision the number of decimals, the least number of an integer's digits, or the most units of a text. Either
/// may be `*` or `*position$`: an integer argument, where a negative width pads on the right and a negative precision
/// is none. Widths and the precisions of numbers end at 4095.
///
/// **Modifiers**: hh, h for one and two bytes; l ll q j z t L for eight. Arguments know their types, so modifiers are
/// needed only to cut an integer down or to widen a negative one: without, `x` of -1 has as many digits as its type.
///
/// An argument of another type is converted: numbers among each other (a real number loses its fraction and is
/// clamped, NaN is 0), texts to the number in front of them, numbers to texts, other objects to their addresses.
/// Arguments are taken in order, by position (from 1), or both. A conversion for which there is no argument, or that
/// is none of the above, is printed as it stands. Nothing depends on the process's locale.
TOVI_EXPORT void appendFormat_arguments(StringBuilder& out, std::u16string_view format, FormatArguments arguments);

}  // namespace tovi
