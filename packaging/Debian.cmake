# Debian packages: `scripts/package`, or `cpack -G DEB` in a build tree whose prefix is /usr.
#
#   liborxexutilities0.2   the two shared libraries
#   liborxexutilities-dev  the files for building programs
#   orx                    the tool
#   python3-orxexutilities the Python package
#   sqlite3-orxexutilities the extension for SQLite

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR ORXExUtilities)
set(CPACK_PACKAGE_CONTACT
    "maintainers <maintainers@users.noreply.c-seed-66cb09f8.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "mapping functions for product data exchange with STEP")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(components library development tool sqlite)
if(ORX_PYTHON)
    list(APPEND components python)
endif()
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The libraries that a package needs are determined from its programs. Those of this project are
# searched for in the build tree and are named explicitly.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(library liborxexutilities${ORX_SOVERSION})
set(of_this_version "${library} (= ${PROJECT_VERSION})")
set(description "The functions turn parts, effectivities, configurations, placements and
names of a product database into STEP (ISO 10303) exchange data and back. An
exchange engine calls them by name.")

# The dependencies of a program that is linked with the libraries, and the trigger that registers them
# with the loader.
set(control ${CMAKE_CURRENT_BINARY_DIR}/control)
file(WRITE ${control}/shlibs "libORXExUtilities ${ORX_SOVERSION} ${of_this_version}
libKORPlatform ${ORX_SOVERSION} ${of_this_version}
")
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "${description}
.
This package holds the module and its stand-alone platform.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborxexutilities-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# A program that uses databases is linked with their client libraries.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${of_this_version}, libpq-dev, libsqlite3-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${description}
.
This package holds the headers, the CMake package and the documents.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME orx)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${of_this_version}")
set(CPACK_COMPONENT_TOOL_DESCRIPTION "${description}
.
This package holds orx, which calls them on exchange files.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-orxexutilities)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${of_this_version}, python3 (>= 3.11), python3 (<< 3.12)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "python3-numpy, python3-distributed, python3-tqdm")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-pandas, python3-psycopg2")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "${description}
.
This package holds the module orxexutilities for Python, and orx-fleet, which
asks many files at once.")

set(CPACK_DEBIAN_SQLITE_PACKAGE_NAME sqlite3-orxexutilities)
set(CPACK_DEBIAN_SQLITE_PACKAGE_SECTION database)
set(CPACK_DEBIAN_SQLITE_PACKAGE_DEPENDS "${of_this_version}")
set(CPACK_DEBIAN_SQLITE_PACKAGE_RECOMMENDS "sqlite3")
set(CPACK_COMPONENT_SQLITE_DESCRIPTION "${description}
.
This package holds orx_sqlite.so, which shows exchange files as tables in
programs that have SQLite.")

include(CPack)

# ---- The documents that are in every package, but in no other installation

set(changelog ${CMAKE_CURRENT_BINARY_DIR}/changelog)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${changelog} "orxexutilities (${PROJECT_VERSION}) unstable; urgency=medium

  * See CHANGELOG.md of the sources.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
execute_process(COMMAND ${GZIP} -9nc ${changelog} OUTPUT_FILE ${changelog}.gz
    COMMAND_ERROR_IS_FATAL ANY)
foreach(component ${components})
    string(TOUPPER ${component} name)
    install(FILES copyright ${changelog}.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME}
        COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
