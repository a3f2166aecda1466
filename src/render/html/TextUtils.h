#pragma once

class QIODevice;
class QString;

/// Small helpers for text.
class TextUtils
{
public:
    /// The text from the device's present position to its end, read as UTF-8
    /// whatever the locale; a UTF-16 or UTF-32 byte order mark is honoured.
    static QString loadUtf8String(QIODevice* device);
};
