#pragma once

#include <QMarginsF>

#include <boost/optional.hpp>

#include <string>

/// Conversions between values and their text, specialised per type.
template <typename Value>
class StringConverter;

template <>
class StringConverter<QMarginsF>
{
public:
    /// The shortest of the forms "M", "H,V" and "L,T,R,B"; sides that
    /// qFuzzyCompare() finds equal count as the same. Whole numbers keep one
    /// decimal: "9.0".
    static std::string toShortString(const QMarginsF& margins);
};

template <>
class StringConverter<boost::optional<QMarginsF>>
{
public:
    /// Reads one ("M"), two ("H,V") or four ("L,T,R,B") comma-separated numbers
    /// with the decimal point of the C locale; empty if `text` is nothing such.
    ///
    /// White space around a number is ignored, and so is whatever follows the
    /// number in its piece: "1in" reads as one inch.
    static boost::optional<QMarginsF> fromString(const std::string& text);
};
