// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/name_value_list.h"

// The requests sent to the plugin, each as the object that a caller would send to certbridge. None
// has a member that suggests a secret: three wrong PINs block a card.

/// A few members with texts, like most requests.
[[nodiscard]] ValueHolder makeTypicalRequest();

/// No members: the plugin receives an empty list.
[[nodiscard]] ValueHolder makeEmptyRequest();

/// Values of every type, under names for which the plugin may expect another type; repeated and
/// empty names; characters and numbers of all kinds.
[[nodiscard]] ValueHolder makeHostileRequest();

/// A value of 100000 nested arrays.
[[nodiscard]] ValueHolder makeDeepRequest();

/// 10000 members, and one with a text of 1 MiB.
[[nodiscard]] ValueHolder makeLargeRequest();
