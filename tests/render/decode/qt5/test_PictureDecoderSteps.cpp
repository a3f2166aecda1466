#include "render/decode/PictureDecoder.h"

#include "support/OddPictures.h"
#include "support/SampleImages.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace {

// Colour in JPEG is left to the plug-in with each version: its chroma has fewer
// samples, so that the fill of the last blocks shows at the edges.
std::vector<OddPictures::File> scaledFiles()
{
    std::vector<OddPictures::File> files = OddPictures::files();
    const std::vector<OddPictures::File> wide = OddPictures::pngFiles({700, 3});
    files.insert(files.end(), wide.begin(), wide.end());
    files.erase(std::remove_if(
                    files.begin(), files.end(),
                    [](const auto& file) { return file.name.find("colour") != std::string::npos; }),
                files.end());
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QImage grey =
            SampleImages::transparent({131, 97}).convertToFormat(QImage::Format_Grayscale8);
        files.push_back({"turned-" + std::to_string(orientation) + ".jpg",
                         SampleImages::jpegFile(grey, orientation)});
        files.push_back({"turned-" + std::to_string(orientation) + ".tif",
                         SampleImages::tiffFile({{SampleImages::quarters({131, 97}),
                                                  static_cast<std::uint16_t>(orientation)}})});
    }
    return files;
}

class PictureDecoderSteps : public testing::TestWithParam<OddPictures::File>
{
};

TEST_P(PictureDecoderSteps, LeadToThePictureOfTheReader)
{
    for (const QSize& size :
         {QSize(131, 97), QSize(200, 150), QSize(120, 90), QSize(90, 70), QSize(60, 97),
          QSize(50, 38), QSize(140, 5), QSize(9, 2), QSize(0, 4)}) {
        QByteArray bytes = GetParam().content;
        QBuffer device(&bytes);
        ASSERT_TRUE(device.open(QIODevice::ReadOnly));
        QImageReader reader(&device);
        reader.setAutoTransform(true);
        reader.setScaledSize(size);
        QImage image;
        const bool isRead = PictureDecoder::readInSteps(reader, image);
        EXPECT_EQ(reader.scaledSize(), size);

        QBuffer otherDevice(&bytes);
        ASSERT_TRUE(otherDevice.open(QIODevice::ReadOnly));
        QImageReader other(&otherDevice);
        other.setAutoTransform(true);
        other.setScaledSize(size);
        QImage expected;
        const bool isReadByQt = PictureDecoder::read(other, expected);
        // A null picture is a failure as well.
        const bool isThere = isRead && !image.isNull();
        ASSERT_EQ(isThere, isReadByQt && !expected.isNull()) << size.width();
        if (isThere) {
            EXPECT_TRUE(SampleImages::isSameImage(image, expected)) << size.width();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Qt5, PictureDecoderSteps, testing::ValuesIn(scaledFiles()),
                         [](const auto& test) {
                             std::string name = std::to_string(test.index) + '_' + test.param.name;
                             for (char& letter : name) {
                                 letter = std::isalnum(static_cast<unsigned char>(letter)) != 0
                                              ? letter
                                              : '_';
                             }
                             return name;
                         });

} // namespace
