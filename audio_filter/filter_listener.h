#pragma once

#include <string>

/// What a host hears of an AudioFilter. The library calls OnEvent alone, in the thread that makes
/// the change and with the filter's lock held: a listener must not call back into the same filter.
/// Another thread may, with SetParameter, as soon as it is told: it waits until all changes are
/// made, so that a listener that waits for it waits for ever. The library never deletes a listener.
class FilterListener {
public:
    virtual void OnError(int code, std::string message) {
        (void)code;
        (void)message;
    }
    virtual void OnWarning(int code, std::string message) {
        (void)code;
        (void)message;
    }

    /// A kind of processing has been switched.
    /// @param code 150001 + 2 * kind for on, one more for off; of the kinds 0, 1, 3 and 4
    /// @param message the same in words, such as "AP_GAIN turn on"
    virtual void OnEvent(int code, std::string message) = 0;

protected:
    ~FilterListener() = default;
};
