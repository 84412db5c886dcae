// How certbridge tells a fatal error. By itself, since a program made of the same steps may have
// its own way.
#include "certbridge/name_value_list.h"
#include "tool/output.h"
#include "vexil/json/json_value.h"

using vexil::JsonValue;

void fatalError(std::int32_t aCode, const char* aMessage) {
    ValueHolder list(JsonValue::createArray());
    appendNameValue(list, "errorCode", JsonValue::createInteger(aCode));
    appendNameValue(list, "errorMessage", aMessage);
    ValueHolder document(JsonValue::createObject());
    appendMember(document, "error", list);
    printJson(*document);
    endAfterFailure();
}
