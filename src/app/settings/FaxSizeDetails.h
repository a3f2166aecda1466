#pragma once

#include "app/settings/FaxConfiguration.h"
#include "app/settings/LogicalDpi.h"

#include <QRect>
#include <QSize>

/// The geometry of one fax page.
struct FaxSizeDetails
{
    LogicalDpi dpi;    ///< Output resolution, as the file states it.
    QSize pageSize;    ///< The whole page in pixels.
    QRect contentRect; ///< The printable area inside the page in pixels, corners inclusive.
};

/// Margins are taken as absent when no side is wider than this, in inches: the
/// threshold of QMarginsF::isNull().
constexpr double marginEpsilon = 1e-12;

/// True if all four sides are within marginEpsilon of zero.
bool areMarginsAbsent(const QMarginsF& margins);

/// The geometry of the input pages.
///
/// The margins are not checked: the printable area may reach beyond the page
/// or be empty. A margin that is not a number gives an empty area.
FaxSizeDetails faxSizeDetailsFor(const FaxConfiguration& configuration);

/// The geometry of a page of the same size with the whole page printable.
FaxSizeDetails wholePageDetails(const FaxSizeDetails& details);
