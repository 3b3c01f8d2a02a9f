#include "host/microphone/environment.h"

#include <cstdlib>

std::string Environment(const char* name) {
    const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing sets any
    return value != nullptr ? value : "";
}
