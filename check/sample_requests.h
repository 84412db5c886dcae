#pragma once

#include "certbridge/name_value_list.h"

// What the plugin is asked, each as the object that a caller would send to certbridge.

/// A few texts, as most requests have them.
ValueHolder makeTypicalRequest();

/// No members at all: the plugin gets an empty list.
ValueHolder makeEmptyRequest();

/// Values of every type under names that may mean something else to the plugin, equal names, an
/// empty one, all kinds of characters and numbers.
ValueHolder makeHostileRequest();

/// Arrays in arrays, 100000 of them.
ValueHolder makeDeepRequest();

/// 10000 members, and one with a text of 1 MiB.
ValueHolder makeLargeRequest();
