#include "render/ImageComplexRenderer.h"

#include "app/settings/RenderSize.h"
#include "support/PrintQt.h"
#include "support/SampleImages.h"

#include <QBuffer>

#include <gtest/gtest.h>

namespace {

const RenderSize anySize{{20, 10}, {204, 196}};

QByteArray pngData()
{
    return SampleImages::pngFile(SampleImages::quarters({20, 10}));
}

QByteArray jpegData()
{
    return SampleImages::jpegFile(SampleImages::quarters({48, 32}));
}

/// An open device whose data can be exchanged.
class Device : public QBuffer
{
public:
    explicit Device(const QByteArray& data) { holdInstead(data); }

    void holdInstead(const QByteArray& data)
    {
        close();
        setData(data);
        EXPECT_TRUE(open(QIODevice::ReadOnly));
    }
};

// While no device is set, initializeRenderer() tells whether a renderer made
// earlier is still kept, because none can be created.
bool isRendererKeptWithoutDevice(ImageComplexRenderer& front)
{
    front.setDevice(nullptr);
    return front.initializeRenderer();
}

// Without a device.

TEST(ImageComplexRendererWithoutADevice, HasNoDevice)
{
    EXPECT_EQ(ImageComplexRenderer().device(), nullptr);
}

TEST(ImageComplexRendererWithoutADevice, CountsNoPages)
{
    EXPECT_EQ(ImageComplexRenderer().count(), 0UL);
}

TEST(ImageComplexRendererWithoutADevice, HasAnInvalidSize)
{
    EXPECT_EQ(ImageComplexRenderer().size(0), QSize(-1, -1));
}

TEST(ImageComplexRendererWithoutADevice, DoesNotRender)
{
    QImage image;
    EXPECT_FALSE(ImageComplexRenderer().render(0, anySize, image));
}

TEST(ImageComplexRendererWithoutADevice, CreatesNoRenderer)
{
    EXPECT_FALSE(ImageComplexRenderer().initializeRenderer());
}

TEST(ImageComplexRendererWithoutADevice, CreatesNoRendererForAKnownFormatEither)
{
    ImageComplexRenderer front;
    front.setFormat(FileFormat::Png);
    EXPECT_FALSE(front.initializeRenderer());
}

// With a format that is detected.

TEST(ImageComplexRendererOfUnknownFormat, CreatesARendererForPngData)
{
    Device device(pngData());
    ImageComplexRenderer front;
    front.setDevice(&device);
    EXPECT_TRUE(front.initializeRenderer());
}

TEST(ImageComplexRendererOfUnknownFormat, RendersPngData)
{
    Device device(pngData());
    ImageComplexRenderer front;
    front.setDevice(&device);
    QImage image;
    ASSERT_TRUE(front.render(0, anySize, image));
    EXPECT_TRUE(SampleImages::isSameImage(image, SampleImages::quarters({20, 10})));
}

// A renderer that guessed the format by itself would decode what replaced the
// data; one made for "png" does not.
TEST(ImageComplexRendererOfUnknownFormat, CreatesItForTheDetectedFormatOnly)
{
    Device device(pngData());
    ImageComplexRenderer front;
    front.setDevice(&device);
    ASSERT_TRUE(front.initializeRenderer());
    device.holdInstead(jpegData());
    EXPECT_EQ(front.count(), 0UL);
}

TEST(ImageComplexRendererOfUnknownFormat, ForgetsItsRendererWithTheDevice)
{
    Device device(pngData());
    ImageComplexRenderer front;
    front.setDevice(&device);
    ASSERT_TRUE(front.initializeRenderer());
    EXPECT_FALSE(isRendererKeptWithoutDevice(front));
}

TEST(ImageComplexRendererOfUnknownFormat, DetectsTheFormatOfAnotherDeviceAfresh)
{
    Device png(pngData());
    Device jpeg(jpegData());
    ImageComplexRenderer front;
    front.setDevice(&png);
    ASSERT_EQ(front.size(0), QSize(20, 10));
    front.setDevice(&jpeg);
    EXPECT_EQ(front.size(0), QSize(48, 32));
}

TEST(ImageComplexRendererOfUnknownFormat, KeepsItsRendererWhenTheSameDeviceIsSet)
{
    Device device(pngData());
    ImageComplexRenderer front;
    front.setDevice(&device);
    ASSERT_TRUE(front.initializeRenderer());
    device.holdInstead("no image"); // which would give no renderer
    front.setDevice(&device);
    EXPECT_TRUE(front.initializeRenderer());
}

TEST(ImageComplexRendererOfUnknownFormat, KeepsItsRendererWhenTheFormatIsSetToUnknownAgain)
{
    Device device(pngData());
    ImageComplexRenderer front;
    front.setDevice(&device);
    ASSERT_TRUE(front.initializeRenderer());
    device.holdInstead("no image");
    front.setFormat(FileFormat::Unknown);
    EXPECT_TRUE(front.initializeRenderer());
}

TEST(ImageComplexRendererOfUnknownFormat, TriesAgainAfterContentThatNothingCanRender)
{
    Device device("Dear Sir or Madam,\n");
    ImageComplexRenderer front;
    front.setDevice(&device);
    ASSERT_FALSE(front.initializeRenderer());
    device.holdInstead(pngData());
    EXPECT_TRUE(front.initializeRenderer());
}

TEST(ImageComplexRendererOfUnknownFormat, TakesHtmlAsOnePageWithoutASize)
{
    Device device("<!DOCTYPE html>\n<html><body><p>Hello</p></body></html>\n");
    ImageComplexRenderer front;
    front.setDevice(&device);
    EXPECT_EQ(front.count(), 1UL);
    EXPECT_EQ(front.size(0), QSize(-1, -1));
}

class ContentWithoutARenderer : public testing::Test
{
protected:
    ContentWithoutARenderer() { m_front.setDevice(&m_device); }

    Device m_device{"Dear Sir or Madam,\n"};
    ImageComplexRenderer m_front;
};

TEST_F(ContentWithoutARenderer, HasNoPages)
{
    EXPECT_EQ(m_front.count(), 0UL);
}

TEST_F(ContentWithoutARenderer, HasAnInvalidSize)
{
    EXPECT_EQ(m_front.size(0), QSize(-1, -1));
}

TEST_F(ContentWithoutARenderer, IsNotRendered)
{
    QImage image;
    EXPECT_FALSE(m_front.render(0, anySize, image));
}

// With a format that is given.

TEST(ImageComplexRendererOfKnownFormat, KeepsItsRendererAcrossDevices)
{
    Device device(jpegData());
    ImageComplexRenderer front;
    front.setFormat(FileFormat::Jpeg);
    front.setDevice(&device);
    ASSERT_TRUE(front.initializeRenderer());
    EXPECT_TRUE(isRendererKeptWithoutDevice(front));
}

TEST(ImageComplexRendererOfKnownFormat, ForwardsANewDeviceToItsRenderer)
{
    Device first(jpegData());
    Device second(SampleImages::jpegFile(SampleImages::quarters({16, 64})));
    ImageComplexRenderer front;
    front.setFormat(FileFormat::Jpeg);
    front.setDevice(&first);
    ASSERT_EQ(front.size(0), QSize(48, 32));
    front.setDevice(&second);
    EXPECT_EQ(front.size(0), QSize(16, 64));
}

TEST(ImageComplexRendererOfKnownFormat, ForwardsTheLossOfTheDevice)
{
    Device device(jpegData());
    ImageComplexRenderer front;
    front.setFormat(FileFormat::Jpeg);
    front.setDevice(&device);
    ASSERT_EQ(front.count(), 1UL);
    front.setDevice(nullptr);
    EXPECT_EQ(front.count(), 0UL);
}

TEST(ImageComplexRendererOfKnownFormat, DoesNotLookAtTheContentForItsFormat)
{
    Device device(pngData());
    ImageComplexRenderer front;
    front.setFormat(FileFormat::Jpeg);
    front.setDevice(&device);
    EXPECT_TRUE(front.initializeRenderer());
    EXPECT_EQ(front.count(), 0UL);
}

TEST(ImageComplexRendererOfKnownFormat, ForgetsItsRendererWithAnotherFormat)
{
    Device device(jpegData());
    ImageComplexRenderer front;
    front.setFormat(FileFormat::Jpeg);
    front.setDevice(&device);
    ASSERT_TRUE(front.initializeRenderer());
    front.setFormat(FileFormat::Png);
    EXPECT_FALSE(isRendererKeptWithoutDevice(front));
}

TEST(ImageComplexRendererOfKnownFormat, CreatesTheRendererOfTheOtherFormatOnNextUse)
{
    Device device(jpegData());
    ImageComplexRenderer front;
    front.setFormat(FileFormat::Png);
    front.setDevice(&device);
    ASSERT_EQ(front.count(), 0UL);
    front.setFormat(FileFormat::Jpeg);
    EXPECT_EQ(front.count(), 1UL);
}

TEST(ImageComplexRendererOfKnownFormat, KeepsItsRendererWhenTheSameFormatIsSet)
{
    Device device(jpegData());
    ImageComplexRenderer front;
    front.setFormat(FileFormat::Jpeg);
    front.setDevice(&device);
    ASSERT_TRUE(front.initializeRenderer());
    front.setFormat(FileFormat::Jpeg);
    EXPECT_TRUE(isRendererKeptWithoutDevice(front));
}

TEST(ImageComplexRendererOfKnownFormat, DetectsTheFormatOnceItIsSetBackToUnknown)
{
    Device device(pngData());
    ImageComplexRenderer front;
    front.setFormat(FileFormat::Jpeg);
    front.setDevice(&device);
    ASSERT_EQ(front.count(), 0UL);
    front.setFormat(FileFormat::Unknown);
    EXPECT_EQ(front.count(), 1UL);
}

// The device and the arguments.

TEST(ImageComplexRenderer, GivesTheDeviceThatWasSet)
{
    Device device(pngData());
    ImageComplexRenderer front;
    front.setDevice(&device);
    EXPECT_EQ(front.device(), &device);
}

TEST(ImageComplexRenderer, DoesNotOwnTheDevice)
{
    Device device(pngData());
    {
        ImageComplexRenderer front;
        front.setDevice(&device);
        ASSERT_TRUE(front.initializeRenderer());
    }
    EXPECT_TRUE(device.isOpen());
}

class ThreePages : public testing::Test
{
protected:
    ThreePages()
    {
        m_front.setFormat(FileFormat::Tiff);
        m_front.setDevice(&m_device);
    }

    QImage m_lastPage = SampleImages::quarters({12, 34});
    Device m_device{SampleImages::tiffFile(
        {{SampleImages::bilevel({40, 20})}, {SampleImages::bilevel({24, 30})}, {m_lastPage}})};
    ImageComplexRenderer m_front;
};

TEST_F(ThreePages, AreCounted)
{
    EXPECT_EQ(m_front.count(), 3UL);
}

TEST_F(ThreePages, HaveTheSizeOfThePageAskedFor)
{
    EXPECT_EQ(m_front.size(2), QSize(12, 34));
}

TEST_F(ThreePages, AreRenderedByIndex)
{
    QImage image;
    ASSERT_TRUE(m_front.render(2, {{12, 34}, {204, 196}}, image));
    EXPECT_TRUE(SampleImages::isSameImage(image, m_lastPage));
}

TEST_F(ThreePages, AreRenderedAtTheSizeAskedFor)
{
    QImage image;
    ASSERT_TRUE(m_front.render(2, {{24, 17}, {204, 196}}, image));
    EXPECT_EQ(image.size(), QSize(24, 17));
}

} // namespace
