# What CPack runs on an installation before it is packed: the same sources give the same bytes.
set(stage ${CPACK_TEMPORARY_DIRECTORY})
execute_process(COMMAND sh ${CPACK_MORVIK_STAGE} ${CPACK_GENERATOR} ${stage} ${CPACK_MORVIK_VERSION} ${CPACK_PACKAGE_CONTACT}
                COMMAND_ERROR_IS_FATAL ANY)
