# Catalogues of translated texts.

# The lrelease of any Qt will do: the format is the same. Debian's own command in /usr/bin needs a chosen Qt.
get_target_property(scribera_qmake Qt${SCRIBERA_QT}::qmake IMPORTED_LOCATION)
get_filename_component(scribera_qt_programs ${scribera_qmake} DIRECTORY)
find_program(SCRIBERA_LRELEASE NAMES lrelease-qt${SCRIBERA_QT} lrelease-qt5 lrelease-qt6 lrelease
    HINTS ${scribera_qt_programs} /usr/lib/qt${SCRIBERA_QT}/bin /usr/lib/qt5/bin /usr/lib/qt6/bin
    DOC "Compiles the catalogues of translated texts")
if(NOT SCRIBERA_LRELEASE)
    message(WARNING "lrelease is missing: windows and tools will speak English only (Debian: qttools5-dev-tools)")
endif()

# scribera_add_catalogues(TARGET FILE.ts...): compiles the catalogues and puts them into the target, a library, as
# resources below :/translations. Without lrelease it does nothing.
function(scribera_add_catalogues target)
    if(NOT SCRIBERA_LRELEASE)
        return()
    endif()
    set(names)
    set(compiled)
    foreach(source IN LISTS ARGN)
        get_filename_component(name ${source} NAME_WE)
        set(output ${CMAKE_CURRENT_BINARY_DIR}/${name}.qm)
        add_custom_command(OUTPUT ${output}
            COMMAND ${SCRIBERA_LRELEASE} -silent ${CMAKE_CURRENT_SOURCE_DIR}/${source} -qm ${output}
            DEPENDS ${source}
            VERBATIM)
        string(APPEND names "<file>${name}.qm</file>")
        list(APPEND compiled ${output})
    endforeach()
    set(list ${CMAKE_CURRENT_BINARY_DIR}/translations.qrc)
    file(CONFIGURE OUTPUT ${list} CONTENT "<RCC><qresource prefix=\"/translations\">${names}</qresource></RCC>\n" @ONLY)
    # The first form of resources has no times in it, so that two builds give the same bytes.
    add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/qrc_translations.cpp
        COMMAND Qt${SCRIBERA_QT}::rcc --name translations --format-version 1 -o ${CMAKE_CURRENT_BINARY_DIR}/qrc_translations.cpp ${list}
        DEPENDS ${compiled} ${list}
        VERBATIM)
    set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/qrc_translations.cpp PROPERTIES SKIP_AUTOGEN ON)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/qrc_translations.cpp)
    target_compile_definitions(${target} PRIVATE SCRIBERA_HAS_CATALOGUES)
endfunction()
