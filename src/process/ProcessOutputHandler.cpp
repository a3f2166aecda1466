#include "process/ProcessOutputHandler.h"

ProcessOutputHandler::~ProcessOutputHandler() = default;
