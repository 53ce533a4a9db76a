# The staged installation, build/windows/dist (VELK_DIST_DIR), and what the
# language module VELK_OEA.dll.mui is built from. Other tools and the tests
# read the staged tree, so its layout is a contract:
#
#   bin/VELK_OEA.dll, bin/VELK_OE.ini, Resource/LanguageMap.ini,
#   Resource/<locale>/StringTable.ini, Resource/<locale>/VELK_OEA.dll.mui
#
# Any folder adds to it without editing this file or resources/:
#
#   include(${VELK_SOURCE_ROOT}/cmake/VelkDist.cmake)
#   velk_dist_add(VELK_OEA bin/VELK_OEA.dll)          # a target: its output file
#   velk_dist_add(${CMAKE_CURRENT_SOURCE_DIR}/x.ini bin/x.ini)   # a file (absolute)
#   velk_dist_consumer(my_e2e_tests)                  # needs the tree staged first
#   velk_add_language_resources(my_dialogs.rc)        # into the language modules
#
# One language module and one string table per language of VELK_LANGUAGES.
# en-US is the original; each other language has its translation of a
# script beside it, named <stem>.<language>.rc (my_dialogs.de-DE.rc), which
# velk_add_language_resources picks up by itself. A missing translation stops
# the configuration: a module without a template would fail only when the
# user opens that window.
#
# velk_dist_add appends "<target or file>|<destination>" to the global
# property VELK_DIST_ITEMS. The `dist` target itself is created by
# velk_dist_target() (called once, from resources/) deferred to the end of the
# top-level CMakeLists, so it sees every item whichever folder registers it
# and in whatever order the folders are added; whether an item names a target
# is decided then too, so a target may be registered before it is defined.
# `dist` is part of ALL, and copies an item again only when its source
# changed. The list of what was staged, "<destination>\t<source>" per line,
# is written to ${CMAKE_BINARY_DIR}/dist-manifest.txt for the tests.
#
# Only the Windows tree stages; in the other trees these calls do nothing.
include_guard(GLOBAL)

set(VELK_LANGUAGES en-US de-DE CACHE INTERNAL "Languages of the language modules")

function(velk_dist_add what destination)
    if(NOT VELK_WINDOWS)
        return()
    endif()
    if(NOT TARGET ${what} AND NOT IS_ABSOLUTE "${what}")
        # A relative name may be a target defined later; a file must be
        # absolute so that it means the same from the top-level directory.
        string(FIND "${what}" "/" slash)
        if(NOT slash EQUAL -1)
            message(FATAL_ERROR "velk_dist_add: '${what}' must be a target or an absolute path")
        endif()
    endif()
    if(IS_ABSOLUTE "${destination}" OR destination MATCHES "(^|/)\\.\\.(/|$)")
        message(FATAL_ERROR "velk_dist_add: destination '${destination}' must lie inside dist")
    endif()
    set_property(GLOBAL APPEND PROPERTY VELK_DIST_ITEMS "${what}|${destination}")
endfunction()

# Targets that read the staged tree when they run (tests, the demo): built
# after `dist`, so building just them still finds the tree up to date.
function(velk_dist_consumer)
    set_property(GLOBAL APPEND PROPERTY VELK_DIST_CONSUMERS ${ARGN})
endfunction()

# Resource scripts of other folders (dialog templates of the settings pages,
# for instance) linked into the language modules, each language its own
# translation. Relative paths are taken from the calling folder.
function(velk_add_language_resources)
    foreach(rc IN LISTS ARGN)
        velk_translations_of("${rc}" scripts)
        foreach(language script IN ZIP_LISTS VELK_LANGUAGES scripts)
            set_property(GLOBAL APPEND PROPERTY VELK_LANGUAGE_MODULE_SOURCES_${language} "${script}")
        endforeach()
    endforeach()
endfunction()

# The script `rc` (relative to the calling folder) in every language of
# VELK_LANGUAGES, in that order, as absolute paths.
function(velk_translations_of rc out)
    get_filename_component(abs "${rc}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    string(REGEX REPLACE "\\.rc$" "" stem "${abs}")
    set(scripts)
    foreach(language IN LISTS VELK_LANGUAGES)
        set(script "${stem}.${language}.rc")
        if(language STREQUAL "en-US")
            set(script "${abs}")
        elseif(NOT EXISTS "${script}")
            message(FATAL_ERROR "${rc}: no ${language} translation (${script})")
        endif()
        list(APPEND scripts "${script}")
    endforeach()
    set(${out} ${scripts} PARENT_SCOPE)
endfunction()

function(velk_dist_target)
    if(NOT VELK_WINDOWS)
        return()
    endif()
    cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL _velk_dist_create)
endfunction()

function(_velk_dist_create)
    get_property(items GLOBAL PROPERTY VELK_DIST_ITEMS)
    set(outputs)
    set(manifest)
    set(seen)
    foreach(item IN LISTS items)
        string(REPLACE "|" ";" parts "${item}")
        list(GET parts 0 what)
        list(GET parts 1 destination)
        if(destination IN_LIST seen)
            message(FATAL_ERROR "velk_dist_add: two items are staged as '${destination}'")
        endif()
        list(APPEND seen "${destination}")
        if(TARGET ${what})
            set(source "$<TARGET_FILE:${what}>")
        elseif(IS_ABSOLUTE "${what}")
            set(source "${what}")
        else()
            message(FATAL_ERROR "velk_dist_add: no target named '${what}'")
        endif()
        set(staged "${VELK_DIST_DIR}/${destination}")
        get_filename_component(staged_dir "${staged}" DIRECTORY)
        # DEPENDS on a target adds both the target and its output file.
        add_custom_command(
            OUTPUT "${staged}"
            COMMAND ${CMAKE_COMMAND} -E make_directory "${staged_dir}"
            COMMAND ${CMAKE_COMMAND} -E copy "${source}" "${staged}"
            DEPENDS "${what}"
            COMMENT "Staging ${destination}"
            VERBATIM)
        list(APPEND outputs "${staged}")
        string(APPEND manifest "${destination}\t${source}\n")
    endforeach()
    file(GENERATE OUTPUT "${CMAKE_BINARY_DIR}/dist-manifest.txt" CONTENT "${manifest}")
    add_custom_target(dist ALL DEPENDS ${outputs})
    get_property(consumers GLOBAL PROPERTY VELK_DIST_CONSUMERS)
    foreach(consumer IN LISTS consumers)
        add_dependencies(${consumer} dist)
    endforeach()
endfunction()
