# cmake -DIN=<made.pot> -DOUT=<po/lectern.pot> -P undated_pot.cmake
# Copies the template without its creation date, and only when its texts
# differ, so that the file in the sources changes only with them.
file(READ ${IN} template)
string(REGEX REPLACE "\"POT-Creation-Date: [^\"]*\\\\n\"\n" "" template "${template}")
set(current "")
if(EXISTS ${OUT})
  file(READ ${OUT} current)
endif()
if(NOT template STREQUAL current)
  file(WRITE ${OUT} "${template}")
endif()
