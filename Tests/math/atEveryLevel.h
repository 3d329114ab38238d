#pragma once

#include "Support/OS/processorLevel.h"

#include <gtest/gtest.h>

#include <cstdint>

template <class Check>
void atEveryLevel(Check check)
{
    for (std::uint32_t level = 0; level <= os::processorLevelMax(); ++level) {
        SCOPED_TRACE(level);
        ASSERT_TRUE(os::setProcessorLevel(static_cast<os::eProcessorLevel>(level)));
        check();
    }
}
