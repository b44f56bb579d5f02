# Writes the MD5 digests of the first 0 to 4,096 letters of a text as another implementation,
# CMake's, computes them.
# usage: cmake -DOUT=FILE -P md5_table.cmake
set(letters "abcdefghijklmnopqrstuvwxyz")
set(text "")
foreach(i RANGE 4095)
  math(EXPR letter "(${i} * 7 + ${i} / 26) % 26")
  string(SUBSTRING "${letters}" ${letter} 1 letter)
  string(APPEND text "${letter}")
endforeach()
set(table "")
foreach(length RANGE 4096)
  string(SUBSTRING "${text}" 0 ${length} beginning)
  string(MD5 digest "${beginning}")
  string(APPEND table "\"${digest}\",\n")
endforeach()
file(WRITE ${OUT} "${table}")
