#include "fax/FaxFormatWriter.h"

FaxFormatWriter::~FaxFormatWriter() = default;
