# What tests need beyond the program's own libraries. On a machine without it they are still
# registered, but skipped: they print what is missing and return VELTO_SKIPPED.

set(VELTO_SKIPPED 77)
# Runs a test if the named programs and fonts are installed; see there for the names.
set(VELTO_NEEDS ${CMAKE_CURRENT_LIST_DIR}/needs)
# Names missing libraries; build.sh configures again while it is not empty.
set(VELTO_MISSING "" CACHE INTERNAL "What this machine lacks for some tests")

# velto_stand_in(<what is missing> <target>...): adds the targets that do not exist. What links one
# of them is replaced by velto_skip_what_is_missing().
function(velto_stand_in what)
  set(missing "")
  foreach(target ${ARGN})
    if(NOT TARGET ${target})
      add_library(${target} INTERFACE IMPORTED GLOBAL)
      set_property(TARGET ${target} PROPERTY VELTO_LACKS "${what}")
      set(missing ", ${what}")
    endif()
  endforeach()
  if(missing)
    message(STATUS "Without ${what}: tests that need it are skipped")
    set(VELTO_MISSING "${VELTO_MISSING}${missing}" CACHE INTERNAL "")
  endif()
endfunction()

# Sets <result> to what the target, or one that it links, lacks.
function(velto_what_lacks target result)
  get_property(lacks TARGET ${target} PROPERTY VELTO_LACKS)
  get_property(known TARGET ${target} PROPERTY VELTO_LACKS SET)
  if(NOT known)
    # Marked before the walk, against circles.
    set_property(TARGET ${target} PROPERTY VELTO_LACKS "")
    get_property(links TARGET ${target} PROPERTY LINK_LIBRARIES)
    foreach(link ${links})
      if(NOT lacks AND TARGET ${link})
        velto_what_lacks(${link} lacks)
      endif()
    endforeach()
    set_property(TARGET ${target} PROPERTY VELTO_LACKS "${lacks}")
  endif()
  set(${result} "${lacks}" PARENT_SCOPE)
endfunction()

# Replaces the programs of a folder, and of those below, that link a stand-in by ones that skip.
function(velto_skip_what_is_missing folder)
  if(NOT VELTO_MISSING)
    return()
  endif()
  get_property(below DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(subfolder ${below})
    velto_skip_what_is_missing(${subfolder})
  endforeach()
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target ${targets})
    get_property(type TARGET ${target} PROPERTY TYPE)
    if(NOT type MATCHES "^(EXECUTABLE|STATIC_LIBRARY|INTERFACE_LIBRARY)$")
      continue()
    endif()
    velto_what_lacks(${target} lacks)
    if(lacks AND NOT type STREQUAL INTERFACE_LIBRARY)
      set(source ${PROJECT_BINARY_DIR}/skipped/${target}.cpp)
      set(main "")
      if(type STREQUAL EXECUTABLE)
        string(CONCAT main "#include <cstdio>\nint main() {\n"
          "  std::puts(\"Skipped: without ${lacks}\");\n  return ${VELTO_SKIPPED};\n}\n")
      endif()
      file(CONFIGURE OUTPUT ${source} CONTENT "// Stands in for ${target}.\n${main}" @ONLY)
      set_target_properties(${target} PROPERTIES SOURCES ${source} AUTOMOC OFF)
    endif()
  endforeach()
endfunction()
