#pragma once

/// What Qt is told before its application object exists.
class QtEnvironment
{
public:
    /// Chooses the platform without a display (see Platform), silences the
    /// remarks of Qt, and takes the settings of the user's desktop out of the
    /// environment of this process, and so of its children.
    static void prepare();
};
