#pragma once

#include <QStringList>

#include <string>

/// Which file a program name stands for, and whether that is the program as the
/// system has installed it, whose needs are known.
///
/// A script, or a file outside the system's own folders (in /usr/local, in a
/// home folder), is somebody's own wrapper, which may need anything.
class InterpreterLocation
{
public:
    /// Looks for `program` on the search path, as QProcess does. The file is
    /// that of the installed program if it lies below one of `systemFolders`,
    /// all links resolved.
    explicit InterpreterLocation(const QString& program,
                                 const QStringList& systemFolders = installationFolders());

    /// The same, looked for once, and anew when the search path has changed. What
    /// is put into its folders afterwards could not be executed anyway: the rules
    /// of a ParentFence are for the file that was there.
    static const InterpreterLocation& known(const QString& program);

    /// /usr with its old names in the root folder, but without /usr/local.
    static QStringList installationFolders();

    /// True if there is a file and it is not the installed program.
    bool isWrapper() const { return !m_path.empty() && !m_isInstalled; }

    /// The file without links; empty if there is none.
    const std::string& path() const { return m_path; }

    /// The file that loads the installed program and its libraries; empty for
    /// a wrapper.
    const std::string& loader() const { return m_loader; }

private:
    std::string m_path;
    std::string m_loader;
    bool m_isInstalled = false;
};
