#pragma once

#include <QImage>
#include <QRect>
#include <QSize>

#include <random>
#include <vector>

/// Pictures to compare our code with Qt's on: always the same sequence.
class RandomImages
{
public:
    /// A whole number from `least` to `most`, both inclusive.
    int number(int least, int most);

    QSize size(const QSize& most);

    /// A rectangle within `area`.
    QRect part(const QSize& area);

    /// QImage::Format_Mono with noise, stripes or blobs. The rows are packed to
    /// whole bytes or as QImage lays them out, by chance; the padding is noise.
    QImage bilevel(const QSize& size, const QVector<QRgb>& colorTable);

    /// An opaque picture in QImage::Format_RGB32 or QImage::Format_Grayscale8:
    /// noise, a gradient, or mostly white.
    QImage picture(const QSize& size, QImage::Format format);

private:
    std::mt19937 m_generator{20260101};
    std::vector<std::vector<uchar>> m_buffers; // behind the images with packed rows
};
