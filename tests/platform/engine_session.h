// A running engine shared by the tests of one suite, with its output buffer and helpers to
// evaluate a command and read what it printed.
#ifndef TAMLO_TESTS_PLATFORM_ENGINE_SESSION_H
#define TAMLO_TESTS_PLATFORM_ENGINE_SESSION_H

#include <gtest/gtest.h>

#include <string>

#include "engine.h"
#include "matrix.h"

namespace tamlo_test {

class EngineSuite : public ::testing::Test {
protected:
    static constexpr int buffer_size = 4096;

    static void SetUpTestSuite() {
        int status = -1;
        engine_ = engOpenSingleUse("", nullptr, &status);
        ASSERT_NE(engine_, nullptr) << "engine did not start, status " << status;
        ASSERT_EQ(status, 0);
        buffer_[0] = '\0';
        ASSERT_EQ(engOutputBuffer(engine_, buffer_, buffer_size), 0);
    }
    static void TearDownTestSuite() {
        if (engine_ != nullptr) {
            EXPECT_EQ(engClose(engine_), 0);
        }
        engine_ = nullptr;
    }
    void SetUp() override { ASSERT_NE(engine_, nullptr); }

    // Evaluates a command that must succeed and returns what it printed.
    static std::string eval(const std::string& command) {
        buffer_[0] = '\0';
        EXPECT_EQ(engEvalString(engine_, command.c_str()), 0) << command;
        return buffer_;
    }

    static Engine* engine_;
    static char buffer_[buffer_size + 1];
};

inline Engine* EngineSuite::engine_ = nullptr;
inline char EngineSuite::buffer_[EngineSuite::buffer_size + 1];

struct ArrayOwner {
    explicit ArrayOwner(mxArray* a = nullptr) : a(a) {}
    ~ArrayOwner() { mxDestroyArray(a); }
    ArrayOwner(const ArrayOwner&) = delete;
    ArrayOwner& operator=(const ArrayOwner&) = delete;
    mxArray* get() const { return a; }
    mxArray* a;
};

}  // namespace tamlo_test

#endif
