#pragma once

class QImage;

/// Pictures in the colours of print: cyan, magenta, yellow and black.
class CmykPicture
{
public:
    /// Makes red, green and blue of a picture that Qt has left in such colours, as
    /// Qt from version 6.8 on does; leaves every other one as it is. The colours are
    /// those that the plug-ins and libtiff itself make of them.
    static void convertToRgb(QImage& image);
};
