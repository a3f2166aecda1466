#pragma once

/// The setting up of fontconfig, which Qt leaves to the first text or picture, or to its end.
class FontSetup
{
public:
    /// Has it done now: once there is an application object, and before there is a
    /// fence, behind which nobody could make the user's folder for the caches of fonts.
    ///
    /// That there is no place for them is the one remark that is dropped: it says
    /// nothing of the pages, and words on standard error put these in doubt.
    static void complete();
};
