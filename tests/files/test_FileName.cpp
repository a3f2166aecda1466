#include "files/FileName.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Row
{
    const char* name;
    const char* bytes;
    const char16_t* decoded;
};

const Row rows[] = {
    {"AsciiIsTakenAsItIs", "in.jpg", u"in.jpg"},
    {"EmptyNameStaysEmpty", "", u""},
    {"WholeCharactersAtTheEnd", "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x93\xa0",
     u"a\u00e9\u20ac\U0001f4e0"},
    {"ByteOrderMarkInFrontIsPartOfTheName", "\xef\xbb\xbf.jpg", u"\ufeff.jpg"},
    {"InvalidByteInside", "in\xff.jpg", u"in\ufffd.jpg"},
    {"CutCharacterInside", "in\xe2\x82.jpg", u"in\ufffd\ufffd.jpg"},
    {"OneOfTwoBytesAtTheEnd", "in.jpg\xc3", u"in.jpg\ufffd"},
    {"OneOfThreeBytesAtTheEnd", "in.jpg\xe2", u"in.jpg\ufffd"},
    {"TwoOfThreeBytesAtTheEnd", "in.jpg\xe2\x82", u"in.jpg\ufffd\ufffd"},
    {"OneOfFourBytesAtTheEnd", "in.jpg\xf0", u"in.jpg\ufffd"},
    {"TwoOfFourBytesAtTheEnd", "in.jpg\xf0\x9f", u"in.jpg\ufffd\ufffd"},
    {"ThreeOfFourBytesAtTheEnd", "in.jpg\xf0\x9f\x93", u"in.jpg\ufffd\ufffd\ufffd"},
    {"ContinuationByteAtTheEnd", "in.jpg\xa9", u"in.jpg\ufffd"},
    {"NothingButACutCharacter", "\xf0\x9f\x93", u"\ufffd\ufffd\ufffd"},
    {"CutCharacterBehindAWholeOne", "\xc3\xa9\xc3", u"\u00e9\ufffd"},
};

class FileNameBytes : public testing::TestWithParam<Row>
{
};

TEST_P(FileNameBytes, AreDecoded)
{
    EXPECT_EQ(FileName::fromUtf8(GetParam().bytes), QStringView(GetParam().decoded).toString());
}

INSTANTIATE_TEST_SUITE_P(FileName, FileNameBytes, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(FileName, DoesNotEndAtANullCharacter)
{
    const QString decoded = FileName::fromUtf8(std::string("in\0.jpg", 7));
    EXPECT_EQ(decoded, QStringView(u"in\0.jpg", 7).toString());
}

} // namespace
