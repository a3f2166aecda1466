// Plays a conquered interpreter: conqueredProgram ATTEMPT ARGUMENT. The exit
// status is 0 if the attempt succeeded, 1 if it failed, 2 if there is none of
// that name.

#include "Attacks.h"

int main(int argc, char** argv)
{
    constexpr int unknown = 2;
    const int result = argc == 3 ? attempt(argv[1], argv[2]) : -1;
    return result < 0 ? unknown : (result == 0 ? 0 : 1);
}
