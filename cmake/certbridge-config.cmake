# vexil::vexil            the support library
# certbridge::plugin      the include folder of <certbridge/plugin.h>, for plugins
# certbridge::certbridge  the program
# certbridge::check       the checker of plugins, certbridge-check
include("${CMAKE_CURRENT_LIST_DIR}/vexil-targets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/certbridge-targets.cmake")
