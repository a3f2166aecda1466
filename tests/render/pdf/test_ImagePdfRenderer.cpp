#include "render/pdf/ImagePdfRenderer.h"

#include "app/settings/RenderSize.h"
#include "support/FakeGhostscript.h"
#include "support/PrintQt.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QBuffer>
#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

namespace {

const RenderSize small{QSize(80, 100), LogicalDpi{0, 0}};
const RenderSize standardA4{QSize(1728, 1146), LogicalDpi{204, 98}};

class ImagePdfRendererTest : public testing::Test
{
protected:
    QString write(const char* name, const QByteArray& content) const
    {
        return QString::fromStdString(m_folder.write(name, content));
    }

    QImage page(unsigned long index, const RenderSize& size = small) const
    {
        QImage image;
        return m_renderer.render(index, size, image) ? image : QImage();
    }

    TemporaryFolder m_folder;
    QFile m_first{write("first.pdf", SamplePdf::equalPages(3))};
    ImagePdfRenderer m_renderer;
};

TEST_F(ImagePdfRendererTest, HasNoDeviceAndNoPagesAtFirst)
{
    EXPECT_EQ(m_renderer.device(), nullptr);
    EXPECT_EQ(m_renderer.count(), 0U);
    EXPECT_TRUE(page(0).isNull());
}

TEST_F(ImagePdfRendererTest, CountsThePagesOfTheFileBehindTheDevice)
{
    m_renderer.setDevice(&m_first);
    EXPECT_EQ(m_renderer.device(), &m_first);
    EXPECT_EQ(m_renderer.count(), 3U);
}

TEST_F(ImagePdfRendererTest, NeverReadsTheDeviceItself)
{
    m_renderer.setDevice(&m_first);
    EXPECT_FALSE(page(0).isNull());
    EXPECT_FALSE(m_first.isOpen());
}

TEST_F(ImagePdfRendererTest, LeavesAnOpenDeviceWhereItIs)
{
    m_first.open(QIODevice::ReadOnly);
    m_first.seek(5);
    m_renderer.setDevice(&m_first);
    EXPECT_FALSE(page(2).isNull());
    EXPECT_EQ(m_first.pos(), 5);
}

TEST_F(ImagePdfRendererTest, HasNoNaturalSizeForAnyPage)
{
    m_renderer.setDevice(&m_first);
    EXPECT_EQ(m_renderer.size(0), QSize(-1, -1));
    EXPECT_EQ(m_renderer.size(2), QSize(-1, -1));
    EXPECT_EQ(m_renderer.size(3), QSize(-1, -1));
    EXPECT_EQ(m_renderer.size(1000000), QSize(-1, -1));
}

TEST_F(ImagePdfRendererTest, RendersEveryPageOfTheCount)
{
    m_renderer.setDevice(&m_first);
    for (unsigned long index = 0; index < 3; ++index) {
        EXPECT_EQ(page(index).size(), QSize(80, 100)) << index;
    }
    EXPECT_TRUE(page(3).isNull());
}

TEST_F(ImagePdfRendererTest, RendersTheSamePagesInOrderAndOutOfOrder)
{
    m_renderer.setDevice(&m_first);
    const QImage pages[] = {page(0), page(1), page(2)};
    ASSERT_FALSE(pages[2].isNull());
    EXPECT_TRUE(isSamePicture(page(1), pages[1]));
    EXPECT_TRUE(isSamePicture(page(0), pages[0]));
    EXPECT_TRUE(isSamePicture(page(2), pages[2]));
}

TEST_F(ImagePdfRendererTest, HasNoPagesInMemory)
{
    QBuffer buffer;
    buffer.setData(SamplePdf::equalPages(3));
    m_renderer.setDevice(&buffer);
    EXPECT_EQ(m_renderer.device(), &buffer);
    EXPECT_EQ(m_renderer.count(), 0U);
    EXPECT_TRUE(page(0).isNull());
}

TEST_F(ImagePdfRendererTest, ForgetsAFileForMemory)
{
    QBuffer buffer;
    m_renderer.setDevice(&m_first);
    m_renderer.setDevice(&buffer);
    EXPECT_EQ(m_renderer.count(), 0U);
}

TEST_F(ImagePdfRendererTest, ForgetsAFileForNoDevice)
{
    m_renderer.setDevice(&m_first);
    m_renderer.setDevice(nullptr);
    EXPECT_EQ(m_renderer.device(), nullptr);
    EXPECT_EQ(m_renderer.count(), 0U);
}

TEST_F(ImagePdfRendererTest, ReadsASecondFile)
{
    QFile second(write("second.pdf", SamplePdf::equalPages(5, SamplePdf::a4)));
    m_renderer.setDevice(&m_first);
    m_renderer.setDevice(&second);
    EXPECT_EQ(m_renderer.count(), 5U);
}

TEST_F(ImagePdfRendererTest, DoesNotReadTheFileOfTheSameDeviceAgain)
{
    const FakeGhostscript ghostscript(GhostscriptAnswer::print("0 0 1 2\n"));
    m_renderer.setDevice(&m_first);
    m_renderer.setDevice(&m_first);
    EXPECT_EQ(ghostscript.runs().size(), 1U);
}

TEST_F(ImagePdfRendererTest, DoesNotReadTheSameFileAgainBehindAnotherDevice)
{
    const FakeGhostscript ghostscript(GhostscriptAnswer::print("0 0 1 2\n"));
    QFile other(m_first.fileName());
    m_renderer.setDevice(&m_first);
    m_renderer.setDevice(&other);
    EXPECT_EQ(m_renderer.device(), &other);
    EXPECT_EQ(ghostscript.runs().size(), 1U);
}

TEST_F(ImagePdfRendererTest, ReadsTheFileOnceHoweverManyPagesItHas)
{
    const FakeGhostscript ghostscript(GhostscriptAnswer::real());
    m_renderer.setDevice(&m_first);
    for (unsigned long index = 0; index < m_renderer.count(); ++index) {
        EXPECT_FALSE(page(index).isNull());
    }
    EXPECT_EQ(ghostscript.runs().size(), 2U);
    EXPECT_EQ(ghostscript.renderedRanges(),
              QStringList(QStringLiteral("-dFirstPage=1 -dLastPage=3 -g80x100")));
}

TEST_F(ImagePdfRendererTest, RendersTwentyStandardPagesInTwoRunsOfRealGhostscript)
{
    QFile file(write("twenty.pdf", SamplePdf::equalPages(20, SamplePdf::a4)));
    const FakeGhostscript ghostscript(GhostscriptAnswer::real());
    m_renderer.setDevice(&file);
    ASSERT_EQ(m_renderer.count(), 20U);
    for (unsigned long index = 0; index < 20; ++index) {
        EXPECT_EQ(page(index, standardA4).size(), QSize(1728, 1146)) << index;
    }
    EXPECT_EQ(ghostscript.renderedRanges(),
              (QStringList{QStringLiteral("-dFirstPage=1 -dLastPage=17 -g1728x2386"),
                           QStringLiteral("-dFirstPage=18 -dLastPage=20 -g1728x2386")}));
}

TEST_F(ImagePdfRendererTest, RendersFortyStandardPagesInThreeRunsOfRealGhostscript)
{
    QFile file(write("forty.pdf", SamplePdf::equalPages(40, SamplePdf::a4)));
    const FakeGhostscript ghostscript(GhostscriptAnswer::real());
    m_renderer.setDevice(&file);
    ASSERT_EQ(m_renderer.count(), 40U);
    for (unsigned long index = 0; index < 40; ++index) {
        EXPECT_FALSE(page(index, standardA4).isNull()) << index;
    }
    EXPECT_EQ(ghostscript.renderedRanges(),
              (QStringList{QStringLiteral("-dFirstPage=1 -dLastPage=17 -g1728x2386"),
                           QStringLiteral("-dFirstPage=18 -dLastPage=34 -g1728x2386"),
                           QStringLiteral("-dFirstPage=35 -dLastPage=40 -g1728x2386")}));
}

TEST_F(ImagePdfRendererTest, RendersAlternatingSizesEachInARunOfItsOwn)
{
    QFile file(
        write("mixed.pdf",
              SamplePdf::file(
                  {{SamplePdf::a4}, {SamplePdf::letter}, {SamplePdf::a4}, {SamplePdf::letter}})));
    const FakeGhostscript ghostscript(GhostscriptAnswer::real());
    m_renderer.setDevice(&file);
    for (unsigned long index = 0; index < 4; ++index) {
        EXPECT_FALSE(page(index).isNull()) << index;
    }
    EXPECT_EQ(ghostscript.renderedRanges().size(), 4);
}

} // namespace
