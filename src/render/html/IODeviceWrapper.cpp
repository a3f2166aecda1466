#include "render/html/IODeviceWrapper.h"

bool IODeviceWrapper::isOpen() const
{
    return m_device != nullptr && m_device->isOpen();
}

bool IODeviceWrapper::isOpen(QIODevice::OpenMode mode) const
{
    return m_device != nullptr && mode != QIODevice::NotOpen &&
           (m_device->openMode() & mode) == mode;
}

bool IODeviceWrapper::isReadable() const
{
    return m_device != nullptr && m_device->isReadable();
}

bool IODeviceWrapper::isWritable() const
{
    return m_device != nullptr && m_device->isWritable();
}

bool IODeviceWrapper::open(QIODevice::OpenMode mode) const
{
    if (m_device == nullptr) {
        return false;
    }
    return m_device->isOpen() ? isOpen(mode) : m_device->open(mode);
}

void IODeviceWrapper::close()
{
    if (isOpen()) {
        m_device->close();
    }
}
