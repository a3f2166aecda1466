#include "app/FaxWriter.h"
#include "app/FontSetup.h"
#include "app/QtEnvironment.h"
#include "app/StandardStreams.h"
#include "options/OptionsApplicationExit.h"
#include "options/OptionsParser.h"
#include "qt/Platform.h"

#include <QGuiApplication>

#include <cstdlib>
#include <exception>
#include <iostream>

#include <malloc.h>

namespace {

// Every page takes and gives back blocks of megabytes. By default they would be
// mapped from the kernel anew each time, which then clears page after page.
void keepFreedMemory()
{
    constexpr int trimThresholdBytes = 512 * 1024 * 1024;
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, trimThresholdBytes);
}

// The last setting is read first: should two of them fail, that one is reported.
FaxConfiguration configurationFrom(const OptionsParser& options)
{
    const FaxCompression compression = options.compression();
    const QMarginsF margins = options.margins();
    const FaxTransformationFlags transformationFlags = options.transformationFlags();
    const FaxRotation rotation = options.rotation();
    const FaxResolution resolution = options.resolution();
    const FaxPaperSize paperSize = options.paperSize();
    return {paperSize, resolution, rotation, transformationFlags, margins, compression};
}

} // namespace

int main(int argc, char** argv)
{
    StandardStreams::ensureOpen();
    keepFreedMemory();
    try {
        OptionsParser options;
        options.parseCommandLine(argc, argv);
        options.checkHelp();
        options.checkVersion();
        options.checkRequiredOptions();
        options.checkMargins();

        QtEnvironment::prepare();
        // Qt must not take the name of a document for one of its own arguments.
        char name[] = "morvaltide";
        char* qtArguments[] = {name, nullptr};
        int qtArgumentCount = 1;
        const QGuiApplication application(qtArgumentCount, qtArguments);
        FontSetup::complete();
        Platform::complete();

        FaxWriter writer(configurationFrom(options));
        writer.setCoverPage(options.coverPage());
        writer.setFiles(options.files());
#ifdef MORVALTIDE_FENCE
        writer.fenceProcess();
#endif
        return writer.write(options.outputFile()) ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const OptionsApplicationExit&) {
        if (!StandardStreams::flushOutput()) {
            std::cerr << "can't write standard output" << std::endl;
            return EXIT_FAILURE;
        }
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return EXIT_FAILURE;
    }
}
