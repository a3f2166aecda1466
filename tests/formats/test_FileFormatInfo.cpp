#include "formats/FileFormatInfo.h"

#include "support/PrintQt.h"

#include <gtest/gtest.h>

namespace {

TEST(FileFormatInfo, MadeFromAFormatAnswersWithItsRow)
{
    const FileFormatInfo info(FileFormat::Jpeg);
    EXPECT_EQ(info.formatName(), QByteArray("jpeg"));
    EXPECT_EQ(info.suffix(), QStringLiteral("jpeg"));
    EXPECT_EQ(info.suffixes(), QStringList({QStringLiteral("jpeg"), QStringLiteral("jpg")}));
    EXPECT_EQ(info.mimeType(), QStringLiteral("image/jpeg"));
}

TEST(FileFormatInfo, MadeFromANameAnswersWithTheRowOfThatName)
{
    const FileFormatInfo info(QByteArray("html"));
    EXPECT_EQ(info.formatName(), QByteArray("html"));
    EXPECT_EQ(info.suffix(), QStringLiteral("html"));
    EXPECT_EQ(info.suffixes(), QStringList({QStringLiteral("html")}));
    EXPECT_EQ(info.mimeType(), QStringLiteral("text/html"));
}

TEST(FileFormatInfo, MadeFromAnUnknownNameAnswersWithNothing)
{
    const FileFormatInfo info(QByteArray("tif"));
    EXPECT_TRUE(info.formatName().isNull());
    EXPECT_TRUE(info.suffix().isNull());
    EXPECT_TRUE(info.suffixes().isEmpty());
    EXPECT_TRUE(info.mimeType().isNull());
}

} // namespace
