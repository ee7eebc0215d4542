# Compiles every file below DIRECTORY into the program, addressed by folder ("XBINS") and file name without its
# ending ("LOGO"). SOURCE_VARIABLE receives the generated assembly file; base/Resources.cpp reads its table.
enable_language(ASM)

function(embed_resources DIRECTORY SOURCE_VARIABLE)
    file(GLOB FILES CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/${DIRECTORY}
         ${DIRECTORY}/*/*.htm ${DIRECTORY}/*/*.gif ${DIRECTORY}/*/*.jpg ${DIRECTORY}/*/*.png
         ${DIRECTORY}/*/*.form)
    list(SORT FILES)
    set(DATA "")
    set(TABLE "")
    set(PATHS "")
    set(NUMBER 0)
    foreach(FILE IN LISTS FILES)
        get_filename_component(TYPE ${FILE} DIRECTORY)
        get_filename_component(NAME ${FILE} NAME_WLE)
        math(EXPR NUMBER "${NUMBER} + 1")
        string(APPEND DATA "resource_data_${NUMBER}: .incbin \"${PROJECT_SOURCE_DIR}/${DIRECTORY}/${FILE}\"\n"
                           "resource_end_${NUMBER}: .byte 0\n"
                           "resource_type_${NUMBER}: .asciz \"${TYPE}\"\n"
                           "resource_name_${NUMBER}: .asciz \"${NAME}\"\n")
        string(APPEND TABLE ".quad resource_type_${NUMBER}, resource_name_${NUMBER}, resource_data_${NUMBER}\n"
                            ".quad resource_end_${NUMBER} - resource_data_${NUMBER}\n")
        list(APPEND PATHS ${PROJECT_SOURCE_DIR}/${DIRECTORY}/${FILE})
    endforeach()
    set(OUTPUT ${PROJECT_BINARY_DIR}/${DIRECTORY}.s)
    file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT
".section .rodata
@DATA@
.section .data.rel.ro,\"aw\"
.balign 8
.globl vantro_resource_table
vantro_resource_table:
@TABLE@
.globl vantro_resource_count
vantro_resource_count: .quad @NUMBER@
.section .note.GNU-stack,\"\",%progbits
")
    set_property(SOURCE ${OUTPUT} PROPERTY OBJECT_DEPENDS "${PATHS}")
    set(${SOURCE_VARIABLE} ${OUTPUT} PARENT_SCOPE)
endfunction()
