/// The log or the pool; the first bit of the script selects.

#include "fuzz/common/pool_script.h"
#include "fuzz/log/log_script.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    if (script.ConsumeBool()) {
        LogScript log(script);
        while (script.GoesOn()) {
            log.Step();
        }
    } else {
        PoolScript pool(script);
        while (script.GoesOn()) {
            pool.Step();
        }
    }
    return 0;
}
