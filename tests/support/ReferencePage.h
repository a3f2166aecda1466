#pragma once

#include "app/settings/FaxSizeDetails.h"

#include <QImage>
#include <QRect>
#include <QSize>
#include <Qt>

#include <gtest/gtest.h>

#include <string>

/// The steps from a picture to a fax page, each done with Qt's plain operations
/// and without the code under test. They say what every page has to look like.
namespace ReferencePage {

/// Page `index` of an image file, decoded at `size` by the plug-in for `format`.
QImage decoded(const std::string& fileName, const char* format, int index, const QSize& size);

QImage rotated(const QImage& image, int angle);

QImage scaled(const QImage& image, const QSize& box, bool enlarge);

/// `alignment` is visual: Qt::AlignRight is right whatever the layout direction.
QImage filled(const QImage& image, const QSize& size, const QRect& rect,
              Qt::Alignment alignment = Qt::AlignCenter);

QImage monochromized(const QImage& image);

/// All four steps: the page that is written for the rendered picture `image`.
QImage composed(const QImage& image, int angle, bool fitToPaper, const FaxSizeDetails& details);

/// The white page on which a picture of black and white lies at `position`,
/// pixel by pixel.
QImage bilevelPage(const QImage& picture, const QSize& pageSize, const QPoint& position);

/// Compares everything that can be told of two images: size, format, colour
/// table, device pixel ratio and every bit of every pixel.
testing::AssertionResult isIdenticalImage(const QImage& actual, const QImage& expected);

} // namespace ReferencePage
