#pragma once

class QTextStream;

/// UTF-8 whatever the locale.
class Utf8
{
public:
    /// Has `stream` read UTF-8, unless the text begins with the byte order mark of
    /// UTF-16 or UTF-32.
    static void useFor(QTextStream& stream);
};
