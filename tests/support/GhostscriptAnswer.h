#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <map>

/// What a stand-in for Ghostscript does in a run: steps, played in the order in
/// which `+` joins them. Nothing at all is a success without output.
class GhostscriptAnswer
{
public:
    /// Steps on standard output. Page sizes are those of letter paper.
    static GhostscriptAnswer print(const QByteArray& text);
    static GhostscriptAnswer pageSizes(int count);
    static GhostscriptAnswer bytes(int count, char value = '\0');

    /// Draws the pages that are asked for by filling all bytes of each with its
    /// number.
    static GhostscriptAnswer numberedPages();

    /// Steps on standard error: a text; the options that the environment names,
    /// or "none".
    static GhostscriptAnswer remark(const QByteArray& text);
    static GhostscriptAnswer remarkOnOptions();

    /// Runs a program, by its name and its arguments.
    static GhostscriptAnswer command(const QStringList& words);

    /// Adds a line to a file.
    static GhostscriptAnswer note(const QString& file);

    /// Waits until there is such a file; waits for a fiftieth of a second.
    static GhostscriptAnswer waitFor(const QString& file);
    static GhostscriptAnswer pause();

    /// Puts a file that cannot be started in the place of the stand-in.
    static GhostscriptAnswer becomeNoProgram();

    /// Steps behind which no other is played. The real Ghostscript gets the same
    /// arguments. For one that draws into a file, whose content is then the output,
    /// there are no options in the environment and standard output is standard
    /// error.
    static GhostscriptAnswer real();
    static GhostscriptAnswer realThroughFile(const QString& file);
    static GhostscriptAnswer exit(int code);
    static GhostscriptAnswer crash(int signal);
    static GhostscriptAnswer hang();
    static GhostscriptAnswer endlessBytes();

    /// The same, its output on standard error.
    GhostscriptAnswer asRemark() const;

    /// The same, its output through a program and without its standard error.
    GhostscriptAnswer through(const QStringList& filter) const;

    GhostscriptAnswer repeated(int count) const;

    friend GhostscriptAnswer operator+(const GhostscriptAnswer& first,
                                       const GhostscriptAnswer& second)
    {
        return GhostscriptAnswer(first.m_steps + second.m_steps);
    }

    /// What is played by the kind of run: one that asks for the page sizes, one
    /// that draws pages from this number on, or any other.
    static GhostscriptAnswer choice(const GhostscriptAnswer& query, const GhostscriptAnswer& run,
                                    const std::map<int, GhostscriptAnswer>& runsFrom);

    /// Adds the arguments to a file, a null byte behind each and a byte of value
    /// one behind the last.
    static GhostscriptAnswer recordArguments(const QString& file);

    /// Writes the process number to a file, and adds a line to another one if the
    /// process that stood there still runs.
    static GhostscriptAnswer recordProcess(const QString& file, const QString& overlaps);

    /// A program of these steps.
    QByteArray script(const QString& realGhostscript) const;

    GhostscriptAnswer() = default;

private:
    explicit GhostscriptAnswer(const QByteArray& steps) : m_steps(steps) {}

    QByteArray m_steps; // lines of shell text, each with its line feed
};
