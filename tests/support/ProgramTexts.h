#pragma once

/// What the program says of itself on standard output, from the first letter to
/// the last line feed.
namespace ProgramTexts {

inline constexpr char version[] = "morvaltide version 1.0.0\n";

// The library leaves a blank where it wraps some of the lines.
inline constexpr char help[] =
    "usage: morvaltide [option]... [file]...\n"
    "options:\n"
    "  -h [ --help ]                  display this help message\n"
    "  -v [ --version ]               display version information\n"
    "  -p [ --paper-size ] <size>     specify paper size: a4, letter, legal \n"
    "                                 (default: a4)\n"
    "  -r [ --resolution ] <type>     specify resolution: standard, fine, superfine,\n"
    "                                 ultrafine (default: fine)\n"
    "  -R [ --rotation ] <angle>      specify rotation angle: 0, 90, 180, 270, -90, \n"
    "                                 -180, -270\n"
    "  -t [ --transformation ] <flag> specify transformation: fittopaper\n"
    "  -m [ --margins ] <value>       specify margins in inches (in L,T,R,B or H,V \n"
    "                                 or M formats)\n"
    "  -c [ --compression ] <group>   specify group encoding compression: g3, g4 \n"
    "                                 (default: g3)\n"
    "  -C [ --cover-page ] <file>     specify cover page HTML file\n"
    "  -o [ --output-file ] <file>    specify output file name\n"
    "\n";

} // namespace ProgramTexts
