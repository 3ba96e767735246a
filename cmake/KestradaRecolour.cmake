# cmake -DINPUT=in.svg -DOUTPUT=out.svg -DFROM=#232629 -DTO=#eff0f1 -P KestradaRecolour.cmake
# Writes INPUT with every FROM colour replaced by TO: how the Dark iconset
# gets its own drawings from the Classic ones.
foreach(var INPUT OUTPUT FROM TO)
    if(NOT DEFINED ${var})
        message(FATAL_ERROR "KestradaRecolour.cmake needs -D${var}=")
    endif()
endforeach()
file(READ "${INPUT}" text)
string(REPLACE "${FROM}" "${TO}" text "${text}")
file(WRITE "${OUTPUT}.tmp" "${text}")
file(RENAME "${OUTPUT}.tmp" "${OUTPUT}")
