#pragma once

/// What pages depend on and no document says, alike with every version of Qt:
/// names of files are UTF-8, text without a size of its own has 12 points, a point
/// is 100/72 units of the layout, and pictures may be of any size.
class Platform
{
public:
    /// Before there is an application object.
    static void prepare();

    /// Once there is one.
    static void complete();
};
