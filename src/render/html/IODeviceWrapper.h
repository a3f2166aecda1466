#pragma once

#include <QIODevice>

/// A null-safe look at a device: without one, every question is answered with
/// false. Made on the spot and thrown away; the device is not owned.
class IODeviceWrapper
{
public:
    explicit IODeviceWrapper(QIODevice* device) : m_device(device) {}

    bool isOpen() const;

    /// True if every flag of `mode` is in the present open mode; false for an
    /// empty `mode`.
    bool isOpen(QIODevice::OpenMode mode) const;

    bool isReadable() const;
    bool isWritable() const;

    /// Opens a closed device. An open one is not opened anew: then the result
    /// is that of isOpen(mode).
    bool open(QIODevice::OpenMode mode) const;

    void close();

private:
    QIODevice* m_device;
};
