#pragma once

#include <QProcess>

/// A QProcess whose child has something to do before it becomes another program.
class PreparedProcess : public QProcess
{
protected:
    PreparedProcess();

    /// Runs in the child between fork and exec: async-signal-safe calls only.
    virtual void prepareChild() = 0;

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
private:
    void setupChildProcess() final;
#endif
};
