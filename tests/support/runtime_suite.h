// The base of a test suite whose tests share one RuntimeProgram: the suite's
// SetUpTestSuite builds it once with Build, and each test stops at its start
// when that failed.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/runtime_program.h"

namespace mb::testing {

// The results of routine for each call, as many as there are calls: when the
// run fails, a failure is recorded and the results are empty ones.
inline std::vector<RoutineResult> CallEach(RuntimeProgram& program, const std::string& routine,
                                           const std::vector<RoutineCall>& calls) {
    std::vector<RoutineResult> results = program.Call(routine, calls);
    if (results.size() != calls.size()) {
        ADD_FAILURE() << routine << ": " << program.Errors;
        results.resize(calls.size());
    }
    return results;
}

class RuntimeSuite : public ::testing::Test {
  protected:
    static void Build(const RuntimeNeeds& needs, const std::string& extra = "") {
        program_ = std::make_unique<RuntimeProgram>();
        built_ = program_->Build(needs, kDefaultSingleDecimals, extra);
    }
    static void TearDownTestSuite() { program_.reset(); }
    void SetUp() override { ASSERT_TRUE(built_) << program_->Errors; }

    inline static std::unique_ptr<RuntimeProgram> program_;
    inline static bool built_ = false;
};

}  // namespace mb::testing
