#pragma once

#include <Qt>

/// Small helpers for placing things.
class GeometryUtils
{
public:
    /// Resolves left and right for the layout direction.
    ///
    /// Without a horizontal flag, left is meant. The result has
    /// Qt::AlignAbsolute where left or right was resolved; an alignment that
    /// has it already is not mirrored.
    static Qt::Alignment visualAlignment(Qt::LayoutDirection direction, Qt::Alignment alignment);
};
