#include "options/OptionsApplicationExit.h"

OptionsApplicationExit::~OptionsApplicationExit() = default;
