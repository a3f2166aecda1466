#include "render/html/HtmlDocument.h"

#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"

#include <QPixmap>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

class HtmlDocumentPicture : public testing::Test
{
protected:
    HtmlDocumentPicture() { m_folder.write("a b.png", SampleImages::pngFile(m_picture)); }

    // The picture that the document has for a name.
    QImage picture(const QString& name)
    {
        return m_document.resource(QTextDocument::ImageResource, QUrl(name))
            .value<QPixmap>()
            .toImage();
    }

    QString path() const { return m_folder.qPath(QStringLiteral("a b.png")); }

    const QImage m_picture = SampleImages::transparent({40, 30});
    TemporaryFolder m_folder;
    HtmlDocument m_document;
    // What the document that Qt has by itself makes of it.
    const QImage m_expected = QPixmap::fromImage(m_picture).toImage();
};

TEST_F(HtmlDocumentPicture, IsFoundByItsPath)
{
    EXPECT_TRUE(SampleImages::isSameImage(picture(path()), m_expected));
}

TEST_F(HtmlDocumentPicture, IsFoundByItsUrl)
{
    EXPECT_TRUE(
        SampleImages::isSameImage(picture(QUrl::fromLocalFile(path()).toString()), m_expected));
}

TEST_F(HtmlDocumentPicture, IsFoundInTheUrlItself)
{
    const QString data = QStringLiteral("data:image/png;base64,") +
                         QString::fromLatin1(SampleImages::pngFile(m_picture).toBase64());
    EXPECT_TRUE(SampleImages::isSameImage(picture(data), m_expected));
}

TEST_F(HtmlDocumentPicture, IsTheSameWhenAskedForAgain)
{
    picture(path());
    EXPECT_TRUE(SampleImages::isSameImage(picture(path()), m_expected));
}

TEST_F(HtmlDocumentPicture, IsNullIfThereIsNone)
{
    EXPECT_TRUE(picture(m_folder.qPath(QStringLiteral("missing.png"))).isNull());
}

TEST_F(HtmlDocumentPicture, IsNullIfItCannotBeDecoded)
{
    m_folder.write("text.png", "no picture");
    EXPECT_TRUE(picture(m_folder.qPath(QStringLiteral("text.png"))).isNull());
}

TEST_F(HtmlDocumentPicture, IsNotWhatAStyleSheetIs)
{
    m_folder.write("style.css", "p { color: red }");
    const QUrl url(m_folder.qPath(QStringLiteral("style.css")));
    EXPECT_EQ(m_document.resource(QTextDocument::StyleSheetResource, url).toByteArray(),
              "p { color: red }");
}

} // namespace
