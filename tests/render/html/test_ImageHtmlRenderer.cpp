#include "render/html/ImageHtmlRenderer.h"

#include "app/settings/RenderSize.h"
#include "render/html/HtmlRenderer.h"
#include "support/OtherLocale.h"
#include "support/PrintQt.h"
#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"

#include <QBuffer>
#include <QFile>

#include <gtest/gtest.h>

namespace {

const RenderSize pageSize{QSize(400, 300), LogicalDpi{204, 98}};

QImage expectedPage(const QString& html)
{
    return HtmlRenderer(html).render(pageSize, QImage::Format_RGB32);
}

class ImageHtmlRendererTest : public testing::Test
{
protected:
    void load(const QByteArray& html)
    {
        m_device.setData(html);
        m_renderer.setDevice(&m_device);
    }

    bool render() { return m_renderer.render(0, pageSize, m_image); }

    ImageHtmlRenderer m_renderer;
    QBuffer m_device;
    QImage m_image;
};

TEST_F(ImageHtmlRendererTest, HasNoDeviceAtFirst)
{
    EXPECT_EQ(m_renderer.device(), nullptr);
    EXPECT_EQ(m_renderer.count(), 0U);
    EXPECT_FALSE(render());
}

TEST_F(ImageHtmlRendererTest, OnlyStoresTheDevice)
{
    load("<p>text</p>");
    EXPECT_EQ(m_renderer.device(), &m_device);
    EXPECT_FALSE(m_device.isOpen());
}

TEST_F(ImageHtmlRendererTest, OpensTheDeviceToCount)
{
    load("<p>text</p>");
    EXPECT_EQ(m_renderer.count(), 1U);
    EXPECT_TRUE(m_device.isReadable());
    EXPECT_FALSE(m_device.isWritable());
}

TEST_F(ImageHtmlRendererTest, OpensTheDeviceToRender)
{
    load("<p>text</p>");
    EXPECT_TRUE(render());
    EXPECT_TRUE(m_device.isOpen());
}

TEST_F(ImageHtmlRendererTest, TakesADeviceThatIsOpenToReadAndWrite)
{
    load("<p>text</p>");
    m_device.open(QIODevice::ReadWrite);
    EXPECT_EQ(m_renderer.count(), 1U);
    EXPECT_TRUE(render());
}

TEST_F(ImageHtmlRendererTest, RefusesADeviceThatIsOpenOnlyToWrite)
{
    load("<p>text</p>");
    m_device.open(QIODevice::WriteOnly);
    EXPECT_EQ(m_renderer.count(), 0U);
    EXPECT_FALSE(render());
}

TEST_F(ImageHtmlRendererTest, RefusesAFileThatDoesNotExist)
{
    const TemporaryFolder folder;
    QFile file(folder.qPath(QStringLiteral("nothing.html")));
    m_renderer.setDevice(&file);
    EXPECT_EQ(m_renderer.count(), 0U);
    EXPECT_FALSE(render());
}

TEST_F(ImageHtmlRendererTest, HasNoNaturalSize)
{
    load("<p>text</p>");
    EXPECT_EQ(m_renderer.size(0), QSize(-1, -1));
    EXPECT_EQ(m_renderer.size(7), QSize(-1, -1));
}

TEST_F(ImageHtmlRendererTest, RendersThePage)
{
    load("<p>text</p>");
    EXPECT_TRUE(render());
    EXPECT_EQ(m_image.format(), QImage::Format_RGB32);
    EXPECT_TRUE(SampleImages::isSameImage(m_image, expectedPage(QStringLiteral("<p>text</p>"))));
}

TEST_F(ImageHtmlRendererTest, HasOnlyOnePageHoweverLongTheTextIs)
{
    const QByteArray html = "<p>" + QByteArray("line<br>").repeated(500) + "</p>";
    load(html);
    EXPECT_EQ(m_renderer.count(), 1U);
    EXPECT_TRUE(render());
    EXPECT_TRUE(SampleImages::isSameImage(m_image, expectedPage(QString::fromUtf8(html))));
}

TEST_F(ImageHtmlRendererTest, HasNoSecondPage)
{
    load("<p>text</p>");
    EXPECT_FALSE(m_renderer.render(1, pageSize, m_image));
    EXPECT_TRUE(m_image.isNull());
    EXPECT_TRUE(render());
}

TEST_F(ImageHtmlRendererTest, CannotRenderTheSameDeviceTwice)
{
    load("<p>text</p>");
    EXPECT_TRUE(render());
    EXPECT_FALSE(render());
    EXPECT_TRUE(m_image.isNull());
    EXPECT_EQ(m_renderer.count(), 1U);
}

TEST_F(ImageHtmlRendererTest, ReadsFromThePresentPosition)
{
    load("<p>first</p><p>second</p>");
    m_device.open(QIODevice::ReadOnly);
    m_device.seek(12);
    EXPECT_TRUE(render());
    EXPECT_TRUE(SampleImages::isSameImage(m_image, expectedPage(QStringLiteral("<p>second</p>"))));
}

TEST_F(ImageHtmlRendererTest, RefusesPlainTextAlthoughItCountsAsAPage)
{
    load("Just words.");
    EXPECT_EQ(m_renderer.count(), 1U);
    EXPECT_FALSE(render());
}

TEST_F(ImageHtmlRendererTest, RefusesAnEmptyFileAlthoughItCountsAsAPage)
{
    load("");
    EXPECT_EQ(m_renderer.count(), 1U);
    EXPECT_FALSE(render());
}

TEST_F(ImageHtmlRendererTest, RefusesAnEmptyPage)
{
    load("<p>text</p>");
    EXPECT_FALSE(m_renderer.render(0, {QSize(0, 300), LogicalDpi{204, 98}}, m_image));
}

TEST_F(ImageHtmlRendererTest, ReadsUtf8WhateverTheLocale)
{
    const OtherLocale locale;
    load("<p>\xd0\x9f\xd1\x80\xd0\xb8 \xc3\xa9</p>");
    EXPECT_TRUE(render());
    EXPECT_TRUE(SampleImages::isSameImage(
        m_image, expectedPage(QStringLiteral(u"<p>\u041f\u0440\u0438 \u00e9</p>"))));
}

TEST_F(ImageHtmlRendererTest, ReplacesInvalidUtf8)
{
    load("<p>a\xff\xfe"
         "b</p>");
    EXPECT_TRUE(render());
    EXPECT_TRUE(
        SampleImages::isSameImage(m_image, expectedPage(QStringLiteral(u"<p>a\ufffd\ufffdb</p>"))));
}

TEST_F(ImageHtmlRendererTest, RendersUtf16WithAByteOrderMark)
{
    load(QByteArray("\xff\xfe<\0p\0>\0\x1f\x04<\0/\0p\0>\0", 18));
    EXPECT_TRUE(render());
    EXPECT_TRUE(SampleImages::isSameImage(m_image, expectedPage(QStringLiteral(u"<p>\u041f</p>"))));
}

TEST_F(ImageHtmlRendererTest, RendersAnotherDeviceAfterTheFirst)
{
    load("<p>first</p>");
    EXPECT_TRUE(render());
    QBuffer second;
    second.setData("<p>second</p>");
    m_renderer.setDevice(&second);
    EXPECT_TRUE(render());
    EXPECT_TRUE(SampleImages::isSameImage(m_image, expectedPage(QStringLiteral("<p>second</p>"))));
}

} // namespace
