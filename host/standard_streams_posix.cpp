#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

#include "host/standard_streams.h"

void FillStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1) {
            open("/",
                 O_RDONLY | O_DIRECTORY);  // takes the lowest free descriptor, which is this one
        }
    }
}
