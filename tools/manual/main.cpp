#include "app/ManualPage.h"

#include <cstdio>

// Prints pelloran(1), so that the build can make the file of what the program's own --help is made of.
int main() {
    return std::fputs(pelloran::manualPage().toUtf8().constData(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}
