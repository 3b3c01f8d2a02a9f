#include "host/info_command.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "host/clean_arguments.h"
#include "host/file_info.h"
#include "host/info_report.h"
#include "host/interrupt.h"

int RunInfo(const Arguments& arguments, const Console& console) {
    if (arguments.files.empty()) {
        throw CLI::ValidationError("FILE", "is required");
    }
    const CleanJob job = CommonJob(arguments);
    int status = kDone;
    for (const std::string& path : arguments.files) {
        const FileInfo info = Inspect(path, job, arguments.scan);
        if (SignalArrived()) {
            return kFailure;
        }
        (arguments.json ? PrintInfoJson : PrintInfo)(console.out, info);
        status = info.problem.empty() ? status : kFailure;
    }
    return status;
}
