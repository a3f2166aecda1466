#pragma once

#include <QProcess>

/// A QProcess whose child has something to do before it becomes another program.
class PreparedProcess : public QProcess
{
protected:
    PreparedProcess();

    /// Runs in the child before it executes the program: async-signal-safe calls
    /// only. Descriptors, signal masks, limits and the like are its own by then;
    /// the memory may still be that of this program, as after vfork().
    virtual void prepareChild() = 0;

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
private:
    void setupChildProcess() final;
#endif
};
