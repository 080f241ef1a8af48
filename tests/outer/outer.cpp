#include "names/Lexicon.h"

int main() {
    return 0;
}
