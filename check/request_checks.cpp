// SPDX-License-Identifier: MIT
#include "check/check_operations.h"
#include "check/sample_requests.h"

std::string checkTypicalRequest(Subject& aSubject) {
    return sendRequest(openPlugin(aSubject), aSubject.typicalRequest);
}

std::string checkEmptyRequest(Subject& aSubject) {
    return sendRequest(openPlugin(aSubject), *makeEmptyRequest());
}

std::string checkHostileRequest(Subject& aSubject) {
    return sendRequest(openPlugin(aSubject), *makeHostileRequest());
}

std::string checkDeepRequest(Subject& aSubject) {
    return sendRequest(openPlugin(aSubject), *makeDeepRequest());
}

std::string checkLargeRequest(Subject& aSubject) {
    return sendRequest(openPlugin(aSubject), *makeLargeRequest());
}

// The second call may invalidate the first reply, which has been read.
std::string checkSecondCall(Subject& aSubject) {
    Plugin& plugin = openPlugin(aSubject);
    sendRequest(plugin, aSubject.typicalRequest);
    return sendRequest(plugin, aSubject.typicalRequest);
}
