#pragma once

class QImageReader;

/// Tells whether QImageReader itself may scale a picture.
class PluginScaling
{
public:
    /// True if reading at the scaled size of `reader`, which does not have to be
    /// set, gives the pixels that Qt 5 gives.
    static bool isExact(const QImageReader& reader);
};
