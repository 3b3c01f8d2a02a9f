#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common/process_lock.h"

/// An operation by its name in the header.
struct Operation {
    std::string name;
    std::function<void()> run;
};

/// An object, ready to use, and its operations. An operation checks its own results.
struct Subject {
    const char* header = "";
    const char* className = "";  ///< empty for functions outside of classes
    std::shared_ptr<void> object;
    ProcessLock* lock = nullptr;        ///< null where there is none
    std::vector<Operation> sideBySide;  ///< those tagged [any] or [audio]
    std::vector<Operation> alone;       ///< those tagged [setup]
    std::function<void()> check;        ///< expects what must hold once sideBySide has run
    int calls = 5;  ///< of an operation in a row; 1 where a second call may block for good
};

Subject FilterSubject();
Subject LogSubject();
Subject FileLogSubject();
Subject PoolSubject();
Subject BufferSubject();
Subject LogFunctionsSubject();
Subject LogWriterSubject();
Subject LockSubject();

inline const std::vector<std::function<Subject()>>& AllSubjects() {
    static const std::vector<std::function<Subject()>> all = {
        FilterSubject, LogSubject,          FileLogSubject,   PoolSubject,
        BufferSubject, LogFunctionsSubject, LogWriterSubject, LockSubject};
    return all;
}
