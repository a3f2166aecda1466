#pragma once

#include <QImage>
#include <QSize>

/// A bilevel page with lines of text-like strokes, white at index 0.
QImage textPage(const QSize& size);

/// An opaque colour picture with smooth areas and detail, QImage::Format_RGB32.
QImage colorPicture(const QSize& size);
