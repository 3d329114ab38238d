#pragma once

#include "frameClock.h"
#include "mediaJob.h"
#include "options.h"
#include "pictures.h"
#include "workload.h"

#include "System/System/Root.h"

/// Prints, for a person, what the engine is and how the run went.
/// @param media  null if it did not run
void printReport(Options const &options, Qel::Root &root, FrameClock const &clock, Workload &workload,
                 MediaJob const *media, Pictures const &pictures);
