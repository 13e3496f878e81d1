# Warning flags for Tarn's own targets (not imposed on a parent project).
function(tarn_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
endfunction()
