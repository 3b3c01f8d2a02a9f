// Writes the man page and the completions of audio-filter, at build time.

#include <exception>
#include <iostream>

#include "host/help/pages.h"

int main(int argc, char** argv) {
    try {
        if (argc != 2) {
            std::cerr << "usage: generate_pages FOLDER\n";
            return 2;
        }
        WritePages(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "generate_pages: " << error.what() << "\n";
        return 1;
    }
}
