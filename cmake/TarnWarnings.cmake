# Warning flags for Tarn's own targets (not imposed on a parent project).
# TARN_WERROR (CI) turns them into errors.
function(tarn_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(TARN_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
