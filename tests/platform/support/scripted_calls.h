// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SUPPORT_SCRIPTED_CALLS_H
#define VORN_TESTS_PLATFORM_SUPPORT_SCRIPTED_CALLS_H

/**
 * How calls of the C library go in this process, which are observed at link level; as ever, unless
 * a test says otherwise.
 */
struct ScriptedCalls {
    struct {
        int calls = 0;
        int failFrom = 0; /**< number of the first call that fails; 0 for none */
        int error = 0;
        bool hideTypes = false;
    } getdents64;
    struct {
        int calls = 0;
        int error = 0; /**< of the next call alone; 0 for none */
    } poll;
    struct {
        int refusedFlag = 0; /**< calls with this flag fail */
        int error = 0;       /**< 0: they go on as though it wasn't given */
    } clone;
};

ScriptedCalls& Calls();

/** Resets them at both ends of a test's part. */
class CallScript {
public:
    CallScript() { Calls() = {}; }
    ~CallScript() { Calls() = {}; }
    CallScript(const CallScript&) = delete;
    CallScript& operator=(const CallScript&) = delete;
};

#endif
