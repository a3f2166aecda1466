#include "bilevel/RandomImages.h"

int RandomImages::number(int least, int most)
{
    return least + static_cast<int>(m_generator() % static_cast<unsigned>(most - least + 1));
}

QSize RandomImages::size(const QSize& most)
{
    const int width = number(1, most.width());
    return {width, number(1, most.height())};
}

QRect RandomImages::part(const QSize& area)
{
    const QSize partSize = size(area);
    const int x = number(0, area.width() - partSize.width());
    const int y = number(0, area.height() - partSize.height());
    return {QPoint(x, y), partSize};
}

QImage RandomImages::bilevel(const QSize& size, const QVector<QRgb>& colorTable)
{
    QImage image;
    if (number(0, 1) == 0) {
        image = QImage(size, QImage::Format_Mono);
    } else {
        const int bytesPerRow = (size.width() + 7) / 8;
        m_buffers.emplace_back(static_cast<std::size_t>(bytesPerRow * size.height()));
        image = QImage(m_buffers.back().data(), size.width(), size.height(), bytesPerRow,
                       QImage::Format_Mono);
    }
    image.setColorTable(colorTable);
    const int density = number(1, 6);
    for (int y = 0; y < size.height(); ++y) {
        uchar* row = image.scanLine(y);
        for (int i = 0; i < image.bytesPerLine(); ++i) {
            const bool isNoise = number(0, density) == 0;
            row[i] = static_cast<uchar>(isNoise ? number(0, 255) : (y / 3 % 2 == 0 ? 0x00 : 0xFF));
        }
    }
    return image;
}

QImage RandomImages::picture(const QSize& size, QImage::Format format)
{
    QImage image(size, format);
    const int kind = number(0, 2);
    for (int y = 0; y < size.height(); ++y) {
        uchar* row = image.scanLine(y);
        const auto bytesPerRow = static_cast<int>(image.bytesPerLine());
        for (int i = 0; i < bytesPerRow; ++i) {
            const int gradient = i * 255 / bytesPerRow;
            const int paper = number(0, 3) == 0 ? number(0, 80) : 255;
            const int noise = number(0, 255);
            row[i] = static_cast<uchar>(kind == 0 ? noise : (kind == 1 ? gradient : paper));
        }
    }
    if (format == QImage::Format_RGB32) {
        // The format wants its unused byte set.
        image = image.convertToFormat(QImage::Format_RGB888).convertToFormat(format);
    }
    return image;
}
