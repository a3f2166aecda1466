#include "benchmarks/BenchmarkImages.h"

#include <cmath>

QImage textPage(const QSize& size)
{
    QImage page(size, QImage::Format_Mono);
    page.setColorTable({0xFFFFFFFF, 0xFF000000});
    page.fill(0);
    for (int y = 100; y < size.height() - 100; ++y) {
        const bool isBetweenLines = y % 40 > 24;
        for (int x = 100; x < size.width() - 100 && !isBetweenLines; ++x) {
            if ((x * 7 + y * 3) % 23 < 4 && x % 90 < 75) {
                page.setPixel(x, y, 1);
            }
        }
    }
    return page;
}

QImage colorPicture(const QSize& size)
{
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int wave =
                static_cast<int>(60.0 * (1.0 + std::sin(x * 0.02) * std::cos(y * 0.03)));
            picture.setPixel(x, y, qRgb(x * 255 / size.width(), wave + 50, (x ^ y) & 0xFF));
        }
    }
    return picture;
}
