# Lets the sources of TARGET, and of what links it, include "FOLDER/name.h". Each folder is reached through a directory of
# its own that holds nothing but a link to it, so that a header of a folder that is not linked is not found.
function(enter_folder TARGET FOLDER)
    set(DOOR ${PROJECT_BINARY_DIR}/floors/${FOLDER})
    file(MAKE_DIRECTORY ${DOOR})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${FOLDER} ${DOOR}/${FOLDER} SYMBOLIC)
    target_include_directories(${TARGET} PUBLIC ${DOOR})
endfunction()

# The library vantro_NAME of all sources in the folder NAME. It stands ON other floors, which whatever stands on it sees
# as well, and USES libraries for itself alone. A MODULE is opened while the program runs; nothing stands on it.
function(add_floor NAME)
    cmake_parse_arguments(PARSE_ARGV 1 FLOOR "MODULE" "" "ON;USES")
    file(GLOB SOURCES CONFIGURE_DEPENDS ${NAME}/*.cpp)
    list(TRANSFORM FLOOR_ON PREPEND vantro_)
    if(FLOOR_MODULE)
        add_library(vantro_${NAME} MODULE ${SOURCES})
    else()
        add_library(vantro_${NAME} STATIC ${SOURCES})
    endif()
    enter_folder(vantro_${NAME} ${NAME})
    target_link_libraries(vantro_${NAME} PUBLIC ${FLOOR_ON} PRIVATE vantro_options ${FLOOR_USES})
endfunction()
