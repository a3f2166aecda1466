#pragma once

#include "files/OutputFileName.h"

#include <string>

/// Keeps other conversions from writing to the same output file at the same
/// time: the second would empty what the first has written.
///
/// The lock belongs to the file, not to its name, and is advisory: the kernel
/// forgets it however the program ends. Devices and pipes are not locked, nor
/// is a file on a file system that knows no locks.
///
/// Nothing here throws or allocates once it is constructed.
class OutputFileLock
{
public:
    explicit OutputFileLock(const std::string& fileName);

    /// Releases the lock.
    ~OutputFileLock();

    OutputFileLock(const OutputFileLock&) = delete;
    OutputFileLock& operator=(const OutputFileLock&) = delete;

    /// To be called before the file is opened and emptied; makes an empty file
    /// if there is none. False if another conversion writes to the file, which
    /// stays as it is.
    bool acquire();

private:
    bool isInPlace() const;
    void release();

    OutputFileName m_name;
    int m_descriptor = -1;
};
