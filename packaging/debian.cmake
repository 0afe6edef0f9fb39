# CPack runs this between installing and packing: what Debian wants inside a package and CMake's install does not do.
# Every component has its folder in the staging place, and in it /usr.

# Manual pages are compressed, without a time, so that two builds give the same bytes.
function(compress_manuals folder)
  file(GLOB_RECURSE manuals "${folder}/usr/share/man/*.[1-8]")
  foreach(manual IN LISTS manuals)
    execute_process(COMMAND gzip -9n "${manual}" COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
endfunction()

# Each package says under which licence it is and what changed.
function(add_papers folder package)
  set(papers "${folder}/usr/share/doc/${package}")
  file(MAKE_DIRECTORY "${papers}")
  configure_file("${CPACK_CORVEL_SOURCE}/packaging/copyright" "${papers}/copyright" COPYONLY)
  execute_process(
    COMMAND "${CPACK_CORVEL_SOURCE}/packaging/debian-changelog" "${CPACK_CORVEL_SOURCE}/CHANGELOG.md"
            "${CPACK_DEBIAN_PACKAGE_RELEASE}" "${CPACK_PACKAGE_CONTACT}"
    COMMAND gzip -9n
    OUTPUT_FILE "${papers}/changelog.Debian.gz" COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD_RECURSE "${papers}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
    DIRECTORY_PERMISSIONS ${CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
endfunction()

# The upstream change log has one name everywhere. What links to it follows.
function(rename_changelog folder package)
  set(papers "${folder}/usr/share/doc/${package}")
  if(NOT EXISTS "${papers}/CHANGELOG.md")
    return()
  endif()
  file(RENAME "${papers}/CHANGELOG.md" "${papers}/changelog")
  execute_process(COMMAND gzip -9n "${papers}/changelog" COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE linking "${papers}/*.md")
  execute_process(COMMAND sed -i "s/CHANGELOG[.]md)/changelog.gz)/g" ${linking} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# shared_library_depends(FOLDER RESULT): what the libraries below FOLDER need, as dpkg-shlibdeps says it.
function(shared_library_depends folder result)
  file(GLOB_RECURSE libraries "${folder}/usr/lib/*.so.*.*")
  file(WRITE "${folder}/debian/control" "") # dpkg-shlibdeps wants to see one, and takes the other for the root
  file(MAKE_DIRECTORY "${folder}/DEBIAN")
  execute_process(COMMAND dpkg-shlibdeps --ignore-missing-info "-l${CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS}" -O
      ${libraries}
    WORKING_DIRECTORY "${folder}" OUTPUT_VARIABLE depends OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE "${folder}/debian" "${folder}/DEBIAN")
  string(REPLACE "shlibs:Depends=" "" depends "${depends}")
  set(${result} "${depends}" PARENT_SCOPE)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" upper)
  set(package "${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
  if(NOT package)
    set(package "${CPACK_PACKAGE_NAME}-${component}")
  endif()
  compress_manuals("${CPACK_TEMPORARY_DIRECTORY}/${component}")
  rename_changelog("${CPACK_TEMPORARY_DIRECTORY}/${component}" "${package}")
  add_papers("${CPACK_TEMPORARY_DIRECTORY}/${component}" "${package}")
endforeach()

shared_library_depends("${CPACK_TEMPORARY_DIRECTORY}/library" depends)
string(APPEND CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS ", ${depends}")
