#pragma once

/// Whether whoever confines this program lets it build fences of its own.
///
/// Most refuse the calls for that with an error, which does no harm. Some, such
/// as a filter of a service manager, end whoever makes them.
class FencePermission
{
public:
    /// Tries it out in a process that may be ended, once, and only if this
    /// program is behind a filter.
    static bool isGranted();
};
