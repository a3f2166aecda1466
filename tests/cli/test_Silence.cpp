#include "CliTest.h"

#include "support/SampleImages.h"

namespace {

// A PNG file with a colour profile that the decoder remarks on: a chunk of its
// own behind the signature and the header chunk.
QByteArray pngWithOddProfile()
{
    constexpr int endOfHeader = 33;
    return blackPng({20, 20}).insert(endOfHeader,
                                     QByteArray::fromHex("00000006694343506f6464000078d22aa1ef"));
}

class Success : public CliTest
{
};

TEST_F(Success, IsSilentAlthoughADecoderRemarksOnMetadata)
{
    folder().write("in.png", pngWithOddProfile());
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "in.png"})));
    EXPECT_EQ(pages().size(), 1U);
}

TEST_F(Success, ShowsTheRemarksOfADecoderToAUserWhoWantsThem)
{
    folder().write("in.png", pngWithOddProfile());
    ProgramStart talkative = start({"-o", "out.tif", "in.png"});
    talkative.environment["QT_LOGGING_RULES"] = "*=true";
    const ProgramResult result = runProgram(talkative);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_NE(result.error.find("iCCP"), std::string::npos) << result.error;
}

// The decoder makes up for what is missing.
TEST_F(Success, IsSilentForAJpegThatEndsWithinItsPicture)
{
    const QByteArray jpeg = SampleImages::jpegFile(SampleImages::transparent({200, 200}));
    folder().write("in.jpg", jpeg.left(jpeg.size() - 1000));
    ASSERT_TRUE(isSilentSuccess(run({"-o", "out.tif", "in.jpg"})));
    EXPECT_EQ(pages().size(), 1U);
}

} // namespace
