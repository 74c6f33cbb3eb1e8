# find_package(ORXExUtilities CONFIG) defines
#
#   ORXExUtilities::ORXExUtilities  the module, for a program that is linked with it
#   ORXExUtilities::Interface       its headers, for an engine that loads it by name
#   ORXExUtilities::KORPlatform     the data access contract and its stand-alone platform
#   ORXExUtilities::Exchange        creating, reading and writing models (static)
#   ORXExUtilities::Relational      models in SQLite and PostgreSQL (static)
include(${CMAKE_CURRENT_LIST_DIR}/ORXExUtilitiesTargets.cmake)
