#pragma once

#include <sys/types.h>

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// The program that is tested: the one that the environment variable
/// MORVALTIDE_PROGRAM names, else `built`.
std::string testedProgram(const char* built);

/// How a program is to be started. Standard input is the null device.
struct ProgramStart
{
    std::string program; ///< Its path.
    std::vector<std::string> arguments;
    std::map<std::string, std::optional<std::string>> environment; ///< Changes; no value removes.
    std::string folder; ///< The working directory; empty for that of the test.

    std::set<int> closedDescriptors; ///< Those of 0, 1 and 2 that are closed at start.
    std::string outputFile;          ///< Where standard output goes instead of ProgramResult.
    std::string errorFile;           ///< Where standard error goes instead of ProgramResult.
    bool hasBrokenErrorPipe = false; ///< Nobody reads standard error.

    std::set<int> ignoredSignals; ///< All others have their default action.
    std::optional<unsigned long> openFilesLimit;
    std::optional<unsigned long> stackLimitBytes;
    bool obeysPermissions = false; ///< File permissions bind it even if the user is root.
};

/// How a program ended.
struct ProgramResult
{
    std::string output; ///< All of standard output.
    std::string error;  ///< All of standard error.
    int exitStatus = -1;
    int signal = 0; ///< That ended it, else 0.
};

/// A program that runs beside the test.
class ProgramRun
{
public:
    explicit ProgramRun(const ProgramStart& start);

    /// Ends the program and all that it has started, if need be.
    ~ProgramRun();

    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    void sendSignal(int number) const;

    /// Waits for the end of the program and of all that hold its standard
    /// output or standard error: a child that outlives it is a test failure.
    /// To be called once.
    ProgramResult finish();

private:
    void kill() const;

    pid_t m_pid = -1;
    std::array<int, 2> m_streams = {-1, -1}; // reading ends: standard output, standard error
};

/// Runs a program from start to end.
ProgramResult runProgram(const ProgramStart& start);
