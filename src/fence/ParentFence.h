#pragma once

#include "fence/LandlockRuleset.h"
#include "fence/PrivateFolder.h"

#include <QString>

#include <memory>
#include <string>

class InterpreterLocation;

/// The fence around this program itself while it reads strangers' documents:
/// it may go on reading files, but not start programs other than one
/// interpreter, change files other than those of the output's folder, or speak
/// with anybody.
///
/// What is open already stays usable. What the kernel, or whoever confines this
/// program, does not grant is left out in silence. Where the interpreter is a
/// wrapper (see InterpreterLocation), which would be behind the same fence,
/// there are no rules for files, programs and sockets.
class ParentFence
{
public:
    /// Enters the fence, for the rest of the life of the calling thread.
    /// `outputFile` has been opened. `newestAbi` as for LandlockRuleset.
    ParentFence(const InterpreterLocation& interpreter, const std::string& outputFile,
                int newestAbi = LandlockInterface::newestAbi);

    /// Removes the folder for temporary files, of which the fence cannot do
    /// without while there are children to come.
    ~ParentFence();

    ParentFence(const ParentFence&) = delete;
    ParentFence& operator=(const ParentFence&) = delete;

private:
    void useTemporaryFolder();
    void restrictFiles(const InterpreterLocation& interpreter, const std::string& outputFile,
                       int newestAbi) const;

    std::unique_ptr<PrivateFolder> m_temporaryFolder; // null for a wrapper
    QByteArray m_placeBefore; // the value of the variable; null if it was not set
};
