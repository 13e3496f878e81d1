# The installed headers are the public interface: every header under
# src/tarn/ except those whose opening comment has a line starting with
# "// Internal to the <module> module" (helpers that the library's own
# sources share). A public header must not include an internal one; the
# consumer_find_package test compiles every installed header on its own.
# Headers of tarn/ui/ belong to the Qt panels, not to tarn_core, and are left
# to the target that builds them.
function(tarn_install_public_headers source_dir destination)
  file(GLOB_RECURSE headers RELATIVE ${source_dir} CONFIGURE_DEPENDS ${source_dir}/tarn/*.h)
  list(FILTER headers EXCLUDE REGEX "^tarn/ui/")
  foreach(header IN LISTS headers)
    file(STRINGS ${source_dir}/${header} internal REGEX "^// Internal to the [a-z_]+ module"
         LIMIT_COUNT 1)
    if(internal)
      continue()
    endif()
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${source_dir}/${header} DESTINATION ${destination}/${folder})
  endforeach()
endfunction()
