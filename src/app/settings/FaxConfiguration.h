#pragma once

#include "app/settings/FaxCompression.h"
#include "app/settings/FaxPaperSize.h"
#include "app/settings/FaxResolution.h"
#include "app/settings/FaxRotation.h"
#include "app/settings/FaxTransformationFlag.h"

#include <QMarginsF>

/// The fax settings of one conversion.
struct FaxConfiguration
{
    FaxPaperSize paperSize = FaxPaperSize::A4;      ///< Selects the page height.
    FaxResolution resolution = FaxResolution::Fine; ///< Selects dots per inch and page width.
    FaxRotation rotation = FaxRotation::Rotate0; ///< Of every input page, never of the cover page.
    FaxTransformationFlags transformationFlags;  ///< FitToPaper or nothing.
    QMarginsF margins;                           ///< Around every input page, in inches.
    FaxCompression compression = FaxCompression::G3; ///< Coding of the output.
};
