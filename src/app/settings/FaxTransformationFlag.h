#pragma once

#include <QFlags>

/// What may be done to an input page to fill the printable area.
enum class FaxTransformationFlag
{
    FitToPaper = 0x1, ///< Enlarge pages that are smaller than the printable area.
};

Q_DECLARE_FLAGS(FaxTransformationFlags, FaxTransformationFlag)
Q_DECLARE_OPERATORS_FOR_FLAGS(FaxTransformationFlags)
