// SPDX-License-Identifier: MIT
#pragma once

#include "check/subject.h"

#include <string>

// The operations of the checks, by source file. Each throws CheckFailure, or returns a note for the
// report. See check_list.cpp for the requirements.

// request_checks.cpp
std::string checkTypicalRequest(Subject& aSubject);
std::string checkEmptyRequest(Subject& aSubject);
std::string checkHostileRequest(Subject& aSubject);
std::string checkDeepRequest(Subject& aSubject);
std::string checkLargeRequest(Subject& aSubject);
std::string checkSecondCall(Subject& aSubject);

// reply_lifetime_check.cpp
std::string checkReplyLifetime(Subject& aSubject);

// process_checks.cpp
std::string checkAfterEffects(Subject& aSubject);
std::string checkUnloading(Subject& aSubject);
std::string checkLowMemory(Subject& aSubject);
