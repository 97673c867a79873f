# velto_desk_test(NAME name COMMAND target-or-program [argument...]
#                 [DISPLAY] [SOUND [PROMPT]] [LOCALE] [LONG] [SERIAL]
#                 [SIZE WxHxD] [TIMEOUT seconds] [ENVIRONMENT name=value...] [NEEDS need...])
#
# Registers a test that runs on a private desk; see `desk --help` for what the desk provides.
#   DISPLAY  with an X server and a window manager
#   SOUND    with a sound server. Such tests never run in parallel (resource lock "sound"). Playback
#            is buffered by 250 ms, because a virtual machine can stall for 100 ms.
#   PROMPT   with no more buffering than the program requests
#   LOCALE   registers name.comma too: the same test under a locale with a decimal comma
#   LONG     label "long" instead of "default"
#   SERIAL   no other test runs at the same time
#   TIMEOUT  60 s by default, 900 s with LONG
#   NEEDS    what must be installed, besides the desk's own programs; see Tests/needs
# A target used as the command must already be defined.

set(VELTO_DESK ${CMAKE_CURRENT_LIST_DIR}/desk CACHE INTERNAL "Runs a command on a private desk")
set(VELTO_DESK_LOCALES ${PROJECT_BINARY_DIR}/locales CACHE INTERNAL "Locales compiled for tests")

function(velto_desk_test)
  cmake_parse_arguments(PARSE_ARGV 0 arg "DISPLAY;SOUND;PROMPT;LOCALE;LONG;SERIAL"
    "NAME;SIZE;TIMEOUT" "COMMAND;ENVIRONMENT;NEEDS")
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_NAME OR NOT arg_COMMAND)
    message(FATAL_ERROR "velto_desk_test(${ARGN}): unknown or missing arguments")
  endif()

  set(switches "")
  set(needs setpriv)
  if(arg_DISPLAY)
    list(APPEND needs Xvfb openbox xprop)
  else()
    list(APPEND switches --no-display)
  endif()
  if(NOT arg_SOUND)
    list(APPEND switches --no-sound)
  else()
    list(APPEND needs pulseaudio pactl)
    if(NOT arg_PROMPT)
      list(APPEND switches --buffer 250)
    endif()
  endif()
  if(arg_SIZE)
    list(APPEND switches --size ${arg_SIZE})
  endif()

  set(label default)
  set(timeout 60)
  if(arg_LONG)
    set(timeout 900)
    set(label long)
  endif()
  if(arg_TIMEOUT)
    set(timeout ${arg_TIMEOUT})
  endif()

  set(command ${arg_COMMAND})
  list(GET command 0 program)
  if(TARGET ${program})
    list(REMOVE_AT command 0)
    list(PREPEND command $<TARGET_FILE:${program}>)
  endif()
  # The desk unsets variables of the desktop, so set those of the test inside it.
  if(arg_ENVIRONMENT)
    list(PREPEND command env ${arg_ENVIRONMENT})
  endif()

  list(APPEND needs ${arg_NEEDS})
  add_test(NAME ${arg_NAME}
    COMMAND ${VELTO_NEEDS} ${needs} -- ${VELTO_DESK} ${switches} -- ${command})
  set(tests ${arg_NAME})
  if(arg_LOCALE)
    add_test(NAME ${arg_NAME}.comma
      COMMAND ${VELTO_NEEDS} ${needs} locale:de_DE --
        ${VELTO_DESK} ${switches} --locale de_DE.UTF-8 -- ${command})
    list(APPEND tests ${arg_NAME}.comma)
    set_tests_properties(${arg_NAME}.comma PROPERTIES
      FIXTURES_REQUIRED commaLocale ENVIRONMENT "VELTO_DESK_LOCALES=${VELTO_DESK_LOCALES}")
    velto_comma_locale()
  endif()
  set_tests_properties(${tests} PROPERTIES
    LABELS ${label} TIMEOUT ${timeout} SKIP_RETURN_CODE ${VELTO_SKIPPED})
  if(arg_SOUND)
    set_tests_properties(${tests} PROPERTIES RESOURCE_LOCK sound)
  endif()
  if(arg_SERIAL)
    set_tests_properties(${tests} PROPERTIES RUN_SERIAL ON)
  endif()
endfunction()

# Compiles the comma locale once for all tests that need it, which takes more than a second. A test
# name is visible only in its own directory, so each directory has such a test.
function(velto_comma_locale)
  file(RELATIVE_PATH place ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  set(name commaLocale:${place})
  if(TEST ${name})
    return()
  endif()
  add_test(NAME ${name} COMMAND ${VELTO_NEEDS} locale:de_DE -- sh -c "\
test -s \"$0/LC_NUMERIC\" || { mkdir -p \"\${0%/*}\" && localedef --no-archive -i de_DE -f UTF-8 \"$0\"; }"
    ${VELTO_DESK_LOCALES}/de_DE.UTF-8)
  set_tests_properties(${name} PROPERTIES FIXTURES_SETUP commaLocale TIMEOUT 60
    RESOURCE_LOCK commaLocale SKIP_RETURN_CODE ${VELTO_SKIPPED})
endfunction()
