#include "render/html/TextUtils.h"

#include "support/OtherLocale.h"
#include "support/PrintQt.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <string>

namespace {

struct Row
{
    const char* name;
    QByteArray bytes;
    QString text;
};

const Row rows[] = {
    {"NothingIsAnEmptyText", "", QString()},
    {"AsciiIsReadAsItIs", "<p>one\ntwo</p>", QStringLiteral("<p>one\ntwo</p>")},
    {"TwoByteSequencesAreOneCharacter", "\xc3\xa9\xd0\x9f", QStringLiteral(u"\u00e9\u041f")},
    {"ThreeByteSequencesAreOneCharacter", "\xe4\xb8\xad", QStringLiteral(u"\u4e2d")},
    {"FourByteSequencesAreASurrogatePair", "\xf0\x9f\x98\x80", QStringLiteral(u"\U0001f600")},
    {"AUtf8ByteOrderMarkIsDropped", "\xef\xbb\xbf<p>", QStringLiteral("<p>")},
    {"AnInvalidByteIsReplaced",
     "a\xff"
     "b",
     QStringLiteral(u"a\ufffdb")},
    {"ATruncatedSequenceAtTheEndIsDropped", "a\xe4\xb8", QStringLiteral("a")},
    {"CarriageReturnsStay", "a\r\nb", QStringLiteral("a\r\nb")},
    {"ANullByteStays", QByteArray("a\0b", 3), QString::fromLatin1("a\0b", 3)},
    {"Utf16LittleEndianIsRecognisedByItsMark", QByteArray("\xff\xfe<\0p\0>\0\x1f\x04", 10),
     QStringLiteral(u"<p>\u041f")},
    {"Utf16BigEndianIsRecognisedByItsMark", QByteArray("\xfe\xff\0<\0p\0>\x04\x1f", 10),
     QStringLiteral(u"<p>\u041f")},
};

class LoadUtf8String : public testing::TestWithParam<Row>
{
};

TEST_P(LoadUtf8String, DecodesTheBytes)
{
    QBuffer device;
    device.setData(GetParam().bytes);
    ASSERT_TRUE(device.open(QIODevice::ReadOnly));
    EXPECT_EQ(TextUtils::loadUtf8String(&device), GetParam().text);
}

TEST_P(LoadUtf8String, IgnoresTheLocale)
{
    const OtherLocale locale;
    QBuffer device;
    device.setData(GetParam().bytes);
    device.open(QIODevice::ReadOnly);
    EXPECT_EQ(TextUtils::loadUtf8String(&device), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(TextUtils, LoadUtf8String, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

class TextUtilsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_device.setData("0123456789");
        ASSERT_TRUE(m_device.open(QIODevice::ReadOnly));
    }

    QBuffer m_device;
};

TEST_F(TextUtilsTest, ReadsFromThePresentPosition)
{
    m_device.seek(4);
    EXPECT_EQ(TextUtils::loadUtf8String(&m_device), QStringLiteral("456789"));
}

TEST_F(TextUtilsTest, LeavesTheDeviceAtItsEnd)
{
    TextUtils::loadUtf8String(&m_device);
    EXPECT_TRUE(m_device.atEnd());
    EXPECT_TRUE(m_device.isOpen());
}

TEST_F(TextUtilsTest, ReadsNothingTheSecondTime)
{
    TextUtils::loadUtf8String(&m_device);
    EXPECT_EQ(TextUtils::loadUtf8String(&m_device), QString());
}

TEST(TextUtils, ReadsALongTextWhole)
{
    // Multi-byte characters lie across every border of the reader's buffer.
    const QString text = QStringLiteral(u"\u20ac").repeated(100001);
    QBuffer device;
    device.setData(text.toUtf8());
    device.open(QIODevice::ReadOnly);
    EXPECT_TRUE(TextUtils::loadUtf8String(&device) == text);
}

} // namespace
