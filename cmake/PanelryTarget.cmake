# What every target of this repository shares: language level, warnings, visibility, sanitizers.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)

if(PANELRY_SANITIZE)
  add_compile_options(-fsanitize=${PANELRY_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${PANELRY_SANITIZE})
  if(PANELRY_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

# With g++ the statics of inline functions and templates are "unique" symbols: the dynamic linker would
# merge those of library and modules into one, hidden or not. clang has no such symbols.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

# panelry_target(NAME): warnings as errors for our own code.
function(panelry_target name)
  target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
  # g++ 12 warns of overlapping copies inside std::string itself once it optimises; false, and not ours.
  target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
  # And, with a sanitizer, of uninitialised parts inside the standard library's regular expressions.
  if(PANELRY_SANITIZE)
    target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  endif()
  target_compile_definitions(${name} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS
                                             $<$<NOT:$<CONFIG:Debug>>:QT_NO_DEBUG>)
endfunction()

# panelry_host_target(NAME): for a program that plays the host. The sanitizer's check of virtual tables asks for type
# records that stand in the library, out of its sight.
function(panelry_host_target name)
  panelry_target(${name})
  if(PANELRY_SANITIZE MATCHES "undefined")
    target_compile_options(${name} PRIVATE -fno-sanitize=vptr)
  endif()
endfunction()

# panelry_version_script(NAME FILE): the dynamic symbol table of NAME holds what FILE names, nothing else.
function(panelry_version_script name file)
  target_link_options(${name} PRIVATE "LINKER:--version-script=${file}" "LINKER:--exclude-libs,ALL"
                                      "LINKER:-Bsymbolic-functions")
  set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS "${file}")
endfunction()
