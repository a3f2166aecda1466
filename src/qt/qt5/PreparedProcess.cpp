#include "qt/PreparedProcess.h"

PreparedProcess::PreparedProcess() = default;

void PreparedProcess::setupChildProcess()
{
    prepareChild();
}
