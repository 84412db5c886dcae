// SPDX-License-Identifier: MIT
module my_plugin

go 1.19
