# Generated tables of the text subsystem: the built-in CP1252 code page, the
# Unicode attributes and the EBCDIC tables. The generators read the C
# library's iconv and Python's Unicode database at build time.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(ZQ_GEN_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/scripts/gen)

add_custom_command(
  OUTPUT ${ZQ_GENERATED_DIR}/zq_cp1252.inc
  COMMAND Python3::Interpreter ${ZQ_GEN_SCRIPTS}/gen_codepage.py CP1252 cp1252
          ${ZQ_GENERATED_DIR}/zq_cp1252.inc --own-values
  DEPENDS ${ZQ_GEN_SCRIPTS}/gen_codepage.py ${ZQ_GEN_SCRIPTS}/iconvtab.py
  COMMENT "Generating the CP1252 tables"
  VERBATIM)
target_sources(zq750util PRIVATE ${ZQ_GENERATED_DIR}/zq_cp1252.inc)

add_custom_command(
  OUTPUT ${ZQ_GENERATED_DIR}/zq_ucattrs.inc
  COMMAND Python3::Interpreter ${ZQ_GEN_SCRIPTS}/gen_ucattrs.py ${ZQ_GENERATED_DIR}/zq_ucattrs.inc
  DEPENDS ${ZQ_GEN_SCRIPTS}/gen_ucattrs.py
  COMMENT "Generating the Unicode attribute table"
  VERBATIM)
add_custom_command(
  OUTPUT ${ZQ_GENERATED_DIR}/zq_ebcdic.inc
  COMMAND Python3::Interpreter ${ZQ_GEN_SCRIPTS}/gen_ebcdic.py ${ZQ_GENERATED_DIR}/zq_ebcdic.inc
  DEPENDS ${ZQ_GEN_SCRIPTS}/gen_ebcdic.py ${ZQ_GEN_SCRIPTS}/iconvtab.py
  COMMENT "Generating the EBCDIC tables"
  VERBATIM)
target_sources(zq750util PRIVATE ${ZQ_GENERATED_DIR}/zq_ucattrs.inc ${ZQ_GENERATED_DIR}/zq_ebcdic.inc)
