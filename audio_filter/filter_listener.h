#pragma once

#include <string>

/// Receives the events of an AudioFilter. The library calls only OnEvent, on the thread that calls
/// SetMethod or Init, with the filter's lock held: a listener must not call back into the same
/// filter. Another thread may call SetParameter in response; it blocks until all changes are made, so
/// a listener that waits for such a thread deadlocks. The library never deletes a listener.
class FilterListener {
public:
    /// [any] Never called by the library.
    virtual void OnError(int code, std::string message) {
        (void)code;
        (void)message;
    }
    /// [any] Never called by the library.
    virtual void OnWarning(int code, std::string message) {
        (void)code;
        (void)message;
    }

    /// [any] A processing kind has been switched. Runs on whichever thread calls SetMethod or Init,
    /// and must be safe there.
    /// @param code 150001 + 2 * kind for on, one more for off; kind is 0, 1, 3 or 4
    /// @param message the same as text, such as "AP_GAIN turn on"
    virtual void OnEvent(int code, std::string message) = 0;

protected:
    ~FilterListener() = default;
};
