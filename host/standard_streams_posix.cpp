#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

#include "host/standard_streams.h"

void FillStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1) {
            open("/", O_RDONLY | O_DIRECTORY);  // the lowest free place, which is this one
        }
    }
}
