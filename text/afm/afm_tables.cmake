# Built-in font metrics. The AFM files of the 35 standard faces are not ours to
# redistribute, so they are read from the installed python-matplotlib-data
# package and turned into tables in the build tree by a small host program.
set(QVGUI_AFM_DIR "/usr/share/matplotlib/mpl-data/fonts/afm" CACHE PATH
  "Folder holding the AFM files of the 35 standard PostScript faces")

# Face order of the tables (text/afm_p.h): the AFM font index order with the
# repeated styles of Symbol, ZapfChancery and ZapfDingbats folded into one.
set(QVGUI_AFM_FILES
  pagk8a pagd8a pagko8a pagdo8a     # AvantGarde
  pbkl8a pbkd8a pbkli8a pbkdi8a     # Bookman
  pcrr8a pcrb8a pcrro8a pcrbo8a     # Courier
  phvr8a phvb8a phvro8a phvbo8a     # Helvetica
  phvr8an phvb8an phvro8an phvbo8an # Helvetica-Narrow
  pncr8a pncb8a pncri8a pncbi8a     # NewCenturySchlbk
  pplr8a pplb8a pplri8a pplbi8a     # Palatino
  psyr                              # Symbol
  ptmr8a ptmb8a ptmri8a ptmbi8a     # Times
  pzcmi8a                           # ZapfChancery-MediumItalic
  pzdr)                             # ZapfDingbats

set(afm_paths "")
foreach(stem IN LISTS QVGUI_AFM_FILES)
  set(path "${QVGUI_AFM_DIR}/${stem}.afm")
  if(NOT EXISTS "${path}")
    message(FATAL_ERROR "Font metrics file ${path} is missing. Install the Debian package "
      "python-matplotlib-data (scripts/install-deps.sh does), or point QVGUI_AFM_DIR at a folder "
      "holding the AFM files of the 35 standard PostScript faces.")
  endif()
  list(APPEND afm_paths "${path}")
endforeach()

add_executable(qvgui_afm_tables_gen ${CMAKE_CURRENT_LIST_DIR}/afm_tables_gen.cpp)
target_link_libraries(qvgui_afm_tables_gen PRIVATE qvgui_warnings)
set(QVGUI_AFM_TABLES ${PROJECT_BINARY_DIR}/generated/afm_tables.cpp)
add_custom_command(OUTPUT ${QVGUI_AFM_TABLES}
  COMMAND qvgui_afm_tables_gen ${QVGUI_AFM_TABLES} ${afm_paths}
  DEPENDS qvgui_afm_tables_gen ${afm_paths}
  COMMENT "Generating font metric tables from ${QVGUI_AFM_DIR}"
  VERBATIM)
target_sources(qvgui PRIVATE ${QVGUI_AFM_TABLES})
