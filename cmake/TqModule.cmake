# Options of everything that becomes part of a Lua module on the device.
#
# Exceptions of a Lua built as C++ pass through our frames, so the unwind tables stay although we throw nothing.
# Assertions are part of the interface, so NDEBUG never applies.
add_library(tq_module_options INTERFACE)
target_compile_options(
  tq_module_options
  INTERFACE -UNDEBUG
            -fvisibility=hidden
            -ffunction-sections
            -fdata-sections
            -fasynchronous-unwind-tables
            $<$<NOT:$<CONFIG:MinSizeRel>>:-fno-plt>
            $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions>
            $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>
            $<$<COMPILE_LANGUAGE:CXX>:-fno-threadsafe-statics>
            $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden>)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm" AND CMAKE_BUILD_TYPE STREQUAL MinSizeRel)
  option(TQ_THUMB "Compile the modules to Thumb code: 8 KiB less for more instructions" ON)
  if(TQ_THUMB)
    target_compile_options(tq_module_options INTERFACE -mthumb)
  endif()
endif()
option(TQ_PORTABLE_STUBS "Make the numbered functions without assembly, as for processors that have no stubs" OFF)
if(TQ_PORTABLE_STUBS)
  target_compile_definitions(tq_module_options INTERFACE TQ_PORTABLE_STUBS)
endif()
set(TQ_HASH_STYLE gnu CACHE STRING "Symbol hash table of the modules: gnu, sysv or both")
if(NOT TQ_HASH_STYLE MATCHES "^(gnu|sysv|both)$")
  message(FATAL_ERROR "TQ_HASH_STYLE is gnu, sysv or both, not ${TQ_HASH_STYLE}.")
endif()
target_include_directories(tq_module_options SYSTEM INTERFACE ${TQ_LUA_INCLUDE_DIR})

# tq_add_module(<name> <sources>...): a Lua module <name>.so that needs the C library only; Lua and the client library
# come from the process that loads it.
#
# It is never unloaded: type descriptors and class records of one module are linked into those of others, in every
# interpreter of the process. It is linked without the compiler's start-up files, as there is nothing to construct. It
# names no directory to look for libraries in, in the build tree either, as some package what lies there.
function(tq_add_module name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "" SUFFIX .so LINKER_LANGUAGE C BUILD_WITH_INSTALL_RPATH ON)
  target_link_libraries(${name} PRIVATE tq_module_options)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/arm_unwind.c)
  endif()
  target_link_options(
    ${name}
    PRIVATE
    -Wl,--gc-sections
    -Wl,-O1
    -Wl,--as-needed
    -Wl,-Bsymbolic
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/module.map
    -Wl,--hash-style=${TQ_HASH_STYLE}
    -Wl,-z,relro
    -Wl,-z,nodelete
    $<$<BOOL:${TQ_THUMB}>:-Wl,--use-blx>
    $<$<NOT:$<BOOL:${TQ_SANITIZE}>>:-nostartfiles>)
endfunction()

# The options that single files of the module have beside. Properties of files hold in one directory: each that compiles
# them calls this.
function(tq_tune_module_sources)
  set(fast binding/dispatch.cpp commands/arrays.cpp commands/commands.cpp commands/invoke.cpp)
  list(TRANSFORM fast PREPEND ${PROJECT_SOURCE_DIR}/)
  if(TQ_THUMB)
    # Most of a call's time is spent here, and Thumb code takes more instructions.
    set_source_files_properties(${fast} PROPERTIES COMPILE_OPTIONS -marm)
  endif()
  if(TQ_SANITIZE)
    # With these checks GCC 12 takes no comparison of function pointers for a constant, and the tables are made of them.
    set_source_files_properties(${PROJECT_SOURCE_DIR}/commands/commands.cpp
                                PROPERTIES COMPILE_OPTIONS -fno-sanitize=null,nonnull-attribute,returns-nonnull-attribute)
  endif()
endfunction()
