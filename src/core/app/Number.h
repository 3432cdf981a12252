// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <optional>

namespace marvik::app {

/// Reads the number at the start of a text the forgiving way the data files
/// and callbook pages need: blanks, tabs and line feeds are skipped wherever
/// they stand, reading stops at the first character that cannot continue a
/// decimal number, and a text without a number gives 0. "&H" and "&O" prefixes
/// read hexadecimal and octal whole numbers. A result too large for a double
/// gives 0 rather than infinity.
double val(QStringView text);

/// As val(), but a "," typed as decimal separator counts as ".": the rule for
/// coordinates typed by the user.
double valCoordinate(QStringView text);

/// A whole number of the 16-bit kind the settings use: rounded half to even,
/// nothing when the value does not fit.
std::optional<qint16> toInt16(double value);

/// A number the way the configuration file prints it: a blank for the sign of
/// a non-negative value (a minus otherwise), the digits and one blank after.
QString printedNumber(int value);

/// A decimal number with at most 15 significant digits, no exponent and no
/// trailing zeros, with a blank in front when it is not negative.
QString signedDecimal(double value);

/// The shortest decimal text of a double with a point, as list files store
/// positions ("52.1", "-0.12", "0").
QString shortestDecimal(double value);

} // namespace marvik::app
