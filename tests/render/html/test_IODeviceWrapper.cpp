#include "render/html/IODeviceWrapper.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

/// A device that counts how often it was opened and closed.
class CountingDevice : public QBuffer
{
public:
    bool open(OpenMode mode) override
    {
        ++m_opened;
        return m_refuses ? false : QBuffer::open(mode);
    }

    void close() override
    {
        ++m_closed;
        QBuffer::close();
    }

    void refuse() { m_refuses = true; }
    int timesOpened() const { return m_opened; }
    int timesClosed() const { return m_closed; }

private:
    bool m_refuses = false;
    int m_opened = 0;
    int m_closed = 0;
};

TEST(IODeviceWrapper, WithoutADeviceIsNotOpen)
{
    EXPECT_FALSE(IODeviceWrapper(nullptr).isOpen());
}

TEST(IODeviceWrapper, WithoutADeviceIsOpenInNoMode)
{
    EXPECT_FALSE(IODeviceWrapper(nullptr).isOpen(QIODevice::ReadOnly));
}

TEST(IODeviceWrapper, WithoutADeviceIsNotReadable)
{
    EXPECT_FALSE(IODeviceWrapper(nullptr).isReadable());
}

TEST(IODeviceWrapper, WithoutADeviceIsNotWritable)
{
    EXPECT_FALSE(IODeviceWrapper(nullptr).isWritable());
}

TEST(IODeviceWrapper, WithoutADeviceCannotBeOpened)
{
    EXPECT_FALSE(IODeviceWrapper(nullptr).open(QIODevice::ReadOnly));
}

TEST(IODeviceWrapper, WithoutADeviceCloseDoesNothing)
{
    EXPECT_NO_FATAL_FAILURE(IODeviceWrapper(nullptr).close());
}

// What is told of a device in each of its states.

struct ModeRow
{
    const char* name;
    QIODevice::OpenMode present; // NotOpen leaves the device closed
    QIODevice::OpenMode asked;
    bool isOpenInMode;
};

const ModeRow modeRows[] = {
    {"AClosedDeviceIsNotOpenForReading", QIODevice::NotOpen, QIODevice::ReadOnly, false},
    {"AClosedDeviceIsNotOpenInTheEmptyMode", QIODevice::NotOpen, QIODevice::NotOpen, false},
    {"AnOpenDeviceIsNotOpenInTheEmptyMode", QIODevice::ReadWrite, QIODevice::NotOpen, false},
    {"AReadOnlyDeviceIsOpenForReading", QIODevice::ReadOnly, QIODevice::ReadOnly, true},
    {"AReadOnlyDeviceIsNotOpenForWriting", QIODevice::ReadOnly, QIODevice::WriteOnly, false},
    {"AReadOnlyDeviceIsNotOpenForBoth", QIODevice::ReadOnly, QIODevice::ReadWrite, false},
    {"AWriteOnlyDeviceIsNotOpenForReading", QIODevice::WriteOnly, QIODevice::ReadOnly, false},
    {"AReadWriteDeviceIsOpenForReading", QIODevice::ReadWrite, QIODevice::ReadOnly, true},
    {"AReadWriteDeviceIsOpenForWriting", QIODevice::ReadWrite, QIODevice::WriteOnly, true},
    {"AReadWriteDeviceIsOpenForBoth", QIODevice::ReadWrite, QIODevice::ReadWrite, true},
    {"AFlagThatIsMissingIsEnoughForFalse", QIODevice::ReadOnly,
     QIODevice::ReadOnly | QIODevice::Text, false},
    {"FurtherFlagsOfTheDeviceDoNotMatter", QIODevice::ReadOnly | QIODevice::Text,
     QIODevice::ReadOnly, true},
};

class PresentMode : public testing::TestWithParam<ModeRow>
{
protected:
    PresentMode()
    {
        if (GetParam().present != QIODevice::NotOpen) {
            m_device.open(GetParam().present);
        }
    }

    CountingDevice m_device;
};

TEST_P(PresentMode, IsComparedFlagByFlag)
{
    EXPECT_EQ(IODeviceWrapper(&m_device).isOpen(GetParam().asked), GetParam().isOpenInMode);
}

TEST_P(PresentMode, MakesItOpenUnlessEmpty)
{
    EXPECT_EQ(IODeviceWrapper(&m_device).isOpen(), GetParam().present != QIODevice::NotOpen);
}

TEST_P(PresentMode, TellsWhetherItIsReadable)
{
    EXPECT_EQ(IODeviceWrapper(&m_device).isReadable(),
              GetParam().present.testFlag(QIODevice::ReadOnly));
}

TEST_P(PresentMode, TellsWhetherItIsWritable)
{
    EXPECT_EQ(IODeviceWrapper(&m_device).isWritable(),
              GetParam().present.testFlag(QIODevice::WriteOnly));
}

INSTANTIATE_TEST_SUITE_P(IODeviceWrapper, PresentMode, testing::ValuesIn(modeRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// Opening.

TEST(IODeviceWrapper, AClosedDeviceIsOpenedInTheModeAskedFor)
{
    CountingDevice device;
    EXPECT_TRUE(IODeviceWrapper(&device).open(QIODevice::ReadOnly));
    EXPECT_EQ(device.openMode() & QIODevice::ReadWrite, QIODevice::ReadOnly);
}

TEST(IODeviceWrapper, ADeviceThatRefusesToOpenGivesFalse)
{
    CountingDevice device;
    device.refuse();
    EXPECT_FALSE(IODeviceWrapper(&device).open(QIODevice::ReadOnly));
    EXPECT_EQ(device.timesOpened(), 1);
}

struct OpenRow
{
    const char* name;
    QIODevice::OpenMode present;
    QIODevice::OpenMode asked;
    bool result;
};

const OpenRow openRows[] = {
    {"AWriteOnlyDeviceIsNotOpenedForReading", QIODevice::WriteOnly, QIODevice::ReadOnly, false},
    {"AReadOnlyDeviceIsAcceptedForReading", QIODevice::ReadOnly, QIODevice::ReadOnly, true},
    {"AReadWriteDeviceIsAcceptedForReading", QIODevice::ReadWrite, QIODevice::ReadOnly, true},
    {"AReadOnlyDeviceIsNotWidenedToReadWrite", QIODevice::ReadOnly, QIODevice::ReadWrite, false},
    {"TheEmptyModeIsRefused", QIODevice::ReadWrite, QIODevice::NotOpen, false},
};

class OpenDevice : public testing::TestWithParam<OpenRow>
{
protected:
    OpenDevice() { m_device.open(GetParam().present); }

    CountingDevice m_device;
};

TEST_P(OpenDevice, GivesWhetherItsModeSuffices)
{
    EXPECT_EQ(IODeviceWrapper(&m_device).open(GetParam().asked), GetParam().result);
}

TEST_P(OpenDevice, IsNotOpenedAnew)
{
    IODeviceWrapper(&m_device).open(GetParam().asked);
    EXPECT_EQ(m_device.timesOpened(), 1);
}

TEST_P(OpenDevice, KeepsItsMode)
{
    const QIODevice::OpenMode before = m_device.openMode();
    IODeviceWrapper(&m_device).open(GetParam().asked);
    EXPECT_EQ(m_device.openMode(), before);
}

INSTANTIATE_TEST_SUITE_P(IODeviceWrapper, OpenDevice, testing::ValuesIn(openRows),
                         [](const auto& test) { return std::string{test.param.name}; });

// Closing.

TEST(IODeviceWrapper, CloseClosesAnOpenDevice)
{
    CountingDevice device;
    device.open(QIODevice::ReadOnly);
    IODeviceWrapper(&device).close();
    EXPECT_FALSE(device.isOpen());
}

TEST(IODeviceWrapper, CloseLeavesAClosedDeviceAlone)
{
    CountingDevice device;
    IODeviceWrapper(&device).close();
    EXPECT_EQ(device.timesClosed(), 0);
}

TEST(IODeviceWrapper, TheDeviceIsNotOwned)
{
    CountingDevice device;
    device.open(QIODevice::ReadOnly);
    std::make_unique<IODeviceWrapper>(&device).reset();
    EXPECT_TRUE(device.isOpen());
}

} // namespace
