#pragma once

class QTextStream;

/// UTF-8 whatever the locale: Qt 6 takes nothing else for granted, Qt 5 has to be
/// told.
class Utf8
{
public:
    /// The names of files, on their way to the system and back.
    static void useForFileNames();

    /// What `stream` reads, unless it begins with the byte order mark of UTF-16 or
    /// UTF-32.
    static void useFor(QTextStream& stream);
};
