#include "bilevel/ErrorDiffusion.h"

#include "bilevel/RandomImages.h"
#include "support/PrintQt.h"

#include <QPainter>

#include <gtest/gtest.h>

namespace {

QImage ditheredByQt(const QImage& image, const QRect& source, const QSize& size,
                    const QPoint& position)
{
    QImage page(size, QImage::Format_ARGB32_Premultiplied);
    page.fill(Qt::white);
    QPainter painter(&page);
    painter.drawImage(position, image, source);
    painter.end();
    return page.convertToFormat(QImage::Format_Mono, Qt::MonoOnly);
}

class Dithering : public testing::TestWithParam<QImage::Format>
{
};

TEST_P(Dithering, GivesWhatPaintingAndConvertingGive)
{
    RandomImages random;
    for (int i = 0; i < 10000; ++i) {
        const QImage image = random.picture(random.size({36, 28}), GetParam());
        const QRect source = random.part(image.size());
        const QSize size = source.size() + QSize(random.number(0, 20), random.number(0, 20));
        const QPoint position(random.number(0, size.width() - source.width()),
                              random.number(0, size.height() - source.height()));
        const QImage dithered = ErrorDiffusion::dithered(image, source, size, position);
        const QImage expected = ditheredByQt(image, source, size, position);
        ASSERT_EQ(dithered.colorTable(), expected.colorTable()) << i;
        ASSERT_TRUE(dithered == expected) << i << ": " << source.width() << " x " << source.height()
                                          << " on " << size.width() << " x " << size.height();
    }
}

TEST_P(Dithering, OfAPictureThatFillsThePageGivesWhatConvertingGives)
{
    RandomImages random;
    for (int i = 0; i < 1000; ++i) {
        const QImage image = random.picture(random.size({90, 50}), GetParam());
        ASSERT_TRUE(ErrorDiffusion::dithered(image, image.rect(), image.size(), QPoint(0, 0)) ==
                    image.convertToFormat(QImage::Format_Mono, Qt::MonoOnly))
            << i;
    }
}

TEST_P(Dithering, OfAWholeFaxPageGivesWhatPaintingAndConvertingGive)
{
    RandomImages random;
    const QImage image = random.picture({1500, 300}, GetParam());
    const QSize size(1728, 2292);
    EXPECT_TRUE(ErrorDiffusion::dithered(image, image.rect(), size, QPoint(114, 996)) ==
                ditheredByQt(image, image.rect(), size, QPoint(114, 996)));
}

TEST_P(Dithering, OfEveryFlatGreyGivesWhatConvertingGives)
{
    for (int level = 0; level < 256; ++level) {
        QImage image(67, 40, GetParam());
        image.fill(QColor(level, level, level));
        ASSERT_TRUE(ErrorDiffusion::dithered(image, image.rect(), image.size(), QPoint(0, 0)) ==
                    image.convertToFormat(QImage::Format_Mono, Qt::MonoOnly))
            << level;
    }
}

INSTANTIATE_TEST_SUITE_P(ErrorDiffusion, Dithering,
                         testing::Values(QImage::Format_RGB32, QImage::Format_Grayscale8),
                         [](const auto& test) {
                             return std::string{test.param == QImage::Format_RGB32 ? "Colour"
                                                                                   : "Grey"};
                         });

// The TIFF plug-in delivers grey pictures with alpha like that.
TEST(ErrorDiffusion, LeavesAPictureThatIsNotOpaqueAfterAllToQt)
{
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::white);
    const QRect corner(39, 29, 1, 1);
    const QRect rest(0, 0, 39, 30);
    reinterpret_cast<QRgb*>(image.scanLine(29))[39] = 0xFEFFFFFF;
    EXPECT_TRUE(ErrorDiffusion::isSupported(image));
    EXPECT_TRUE(ErrorDiffusion::dithered(image, corner, {50, 50}, {5, 5}).isNull());
    EXPECT_FALSE(ErrorDiffusion::dithered(image, rest, {50, 50}, {5, 5}).isNull());
}

TEST(ErrorDiffusion, LeavesPicturesWithAlphaOrAPixelRatioToQt)
{
    QImage retina(2, 2, QImage::Format_RGB32);
    retina.setDevicePixelRatio(2.0);
    EXPECT_FALSE(ErrorDiffusion::isSupported(retina));
    EXPECT_FALSE(ErrorDiffusion::isSupported(QImage(2, 2, QImage::Format_ARGB32)));
    EXPECT_FALSE(ErrorDiffusion::isSupported(QImage(2, 2, QImage::Format_ARGB32_Premultiplied)));
    EXPECT_FALSE(ErrorDiffusion::isSupported(QImage(2, 2, QImage::Format_Mono)));
    EXPECT_FALSE(ErrorDiffusion::isSupported(QImage(2, 2, QImage::Format_Indexed8)));
    EXPECT_FALSE(ErrorDiffusion::isSupported(QImage()));
    EXPECT_TRUE(ErrorDiffusion::isSupported(QImage(2, 2, QImage::Format_RGB32)));
    EXPECT_TRUE(ErrorDiffusion::isSupported(QImage(2, 2, QImage::Format_Grayscale8)));
}

} // namespace
