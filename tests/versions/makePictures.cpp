#include "support/OddPictures.h"
#include "support/SampleImages.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QLoggingCategory>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

// Makes the pictures that tests/versions/compare converts: a folder of them for each
// way in which a picture can be large or small, since each has options of its own.

namespace {

using Files = std::vector<OddPictures::File>;

struct Format
{
    const char* name;
    QImage::Format format;
};

// Whatever Qt stores in PNG as it is.
constexpr Format pngFormats[] = {
    {"mono", QImage::Format_Mono},         {"indexed", QImage::Format_Indexed8},
    {"grey-8", QImage::Format_Grayscale8}, {"grey-16", QImage::Format_Grayscale16},
    {"rgb", QImage::Format_RGB32},         {"rgba", QImage::Format_ARGB32},
    {"rgb-16", QImage::Format_RGBX64},     {"rgba-16", QImage::Format_RGBA64},
};

// With a megapixel and more Qt 6 scales in another way than with less.
Files largeFiles()
{
    const QImage image = SampleImages::transparent({1400, 1100});
    Files files;
    for (const Format& format : pngFormats) {
        files.push_back({std::string(format.name) + ".png",
                         SampleImages::pngFile(image.convertToFormat(format.format))});
    }
    for (const OddPictures::File& file : OddPictures::jpegFiles(image.size())) {
        files.push_back(file);
    }
    return files;
}

// Each of the eight orientations that metadata can ask for.
Files turnedFiles()
{
    const QImage colour = SampleImages::transparent(OddPictures::usualSize);
    const QImage grey = colour.convertToFormat(QImage::Format_Grayscale8);
    const QImage bilevel = SampleImages::bilevel(OddPictures::usualSize);
    Files files;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const std::string number = std::to_string(orientation);
        const auto tag = static_cast<std::uint16_t>(orientation);
        files.push_back({"colour-" + number + ".jpg", SampleImages::jpegFile(colour, orientation)});
        files.push_back({"grey-" + number + ".jpg", SampleImages::jpegFile(grey, orientation)});
        files.push_back({"colour-" + number + ".tif", SampleImages::tiffFile({{colour, tag}})});
        files.push_back({"bilevel-" + number + ".tif", SampleImages::tiffFile({{bilevel, tag}})});
    }
    return files;
}

// Qt takes the pixels of what is named so for halves.
Files halfFiles()
{
    Files files = OddPictures::jpegFiles();
    for (const char* name : {"8-rgb", "8-grey", "16-rgb-alpha", "8-rgb-alpha-interlaced"}) {
        for (const OddPictures::File& file : OddPictures::pngFiles()) {
            if (file.name == std::string(name) + ".png") {
                files.push_back(file);
            }
        }
    }
    for (OddPictures::File& file : files) {
        file.name.insert(file.name.find('.'), "@2x");
    }
    return files;
}

void write(const QDir& folder, const QString& name, const Files& files)
{
    EXPECT_TRUE(folder.mkdir(name));
    for (const OddPictures::File& file : files) {
        QFile output(folder.filePath(name + QLatin1Char('/') + QString::fromStdString(file.name)));
        EXPECT_TRUE(output.open(QIODevice::WriteOnly));
        EXPECT_EQ(output.write(file.content), file.content.size());
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: makePictures FOLDER\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    const QGuiApplication application(argc, argv);
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    write(folder, QStringLiteral("usual"), OddPictures::files());
    write(folder, QStringLiteral("truncated"), OddPictures::truncatedFiles());
    write(folder, QStringLiteral("wide"), OddPictures::pngFiles({2900, 37}));
    write(folder, QStringLiteral("tall"), OddPictures::tiffFiles({37, 2900}));
    write(folder, QStringLiteral("tiny"), OddPictures::tiffFiles({21, 17}));
    write(folder, QStringLiteral("large"), largeFiles());
    write(folder, QStringLiteral("turned"), turnedFiles());
    write(folder, QStringLiteral("half"), halfFiles());
    return testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed() ? 1 : 0;
}
