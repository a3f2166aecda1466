#include "qt/Platform.h"

#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QScreen>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace {

// The application object of the tests is on the same platform as the program's.

TEST(Platform, HasADefaultFontOf12Points)
{
    EXPECT_EQ(QGuiApplication::font().pointSize(), 12);
    EXPECT_EQ(QTextDocument().defaultFont().pointSize(), 12);
}

TEST(Platform, HasAScreenOf100DotsPerInch)
{
    // Qt rounds it before it makes use of it.
    EXPECT_EQ(qRound(QGuiApplication::primaryScreen()->logicalDotsPerInchX()), 100);
    EXPECT_EQ(qRound(QGuiApplication::primaryScreen()->logicalDotsPerInchY()), 100);
}

TEST(Platform, DrawsNothingAtAScale)
{
    EXPECT_EQ(QGuiApplication::primaryScreen()->devicePixelRatio(), 1.0);
    EXPECT_EQ(qGuiApp->devicePixelRatio(), 1.0);
}

TEST(Platform, GivesNewPicturesTheResolutionOfTheScreen)
{
    EXPECT_EQ(QImage(1, 1, QImage::Format_RGB32).logicalDpiX(), 100);
    EXPECT_EQ(QImage(1, 1, QImage::Format_RGB32).logicalDpiY(), 100);
}

TEST(Platform, NamesFilesInUtf8)
{
    EXPECT_EQ(QFile::encodeName(QStringLiteral(u"\u00e9\u20ac")).toStdString(),
              "\xc3\xa9\xe2\x82\xac");
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
TEST(Platform, LimitsNoPicture)
{
    EXPECT_EQ(QImageReader::allocationLimit(), 0);
}
#endif

} // namespace
