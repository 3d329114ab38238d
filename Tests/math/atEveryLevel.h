#pragma once

#include "System/math/kernelLevel.h"

#include <gtest/gtest.h>

template <class Check>
void atEveryLevel(Check check)
{
    for (std::uint32_t level = 0; level <= Qel::kernelLevelMax(); ++level) {
        SCOPED_TRACE(level);
        ASSERT_TRUE(Qel::setKernelLevel(static_cast<Qel::eKernelLevel>(level)));
        check();
    }
}
