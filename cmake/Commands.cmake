# Distributions keep the completions of packages beside those that come with zsh.
set(QUOLL_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    CACHE STRING "Where zsh finds completions, below the prefix")

# A command comes with a man page and with completions for each shell:
# NAME.1, NAME.bash, NAME.zsh and NAME.fish in FOLDER.
#   quoll_command(quoll-share FOLDER share COMPONENT quoll-share)
function(quoll_command name)
  cmake_parse_arguments(PARSE_ARGV 1 COMMAND "" "FOLDER;COMPONENT" "")
  set(folder ${CMAKE_CURRENT_SOURCE_DIR}/${COMMAND_FOLDER})
  install(FILES ${folder}/${name}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
          COMPONENT ${COMMAND_COMPONENT})
  install(FILES ${folder}/${name}.bash RENAME ${name}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
          COMPONENT ${COMMAND_COMPONENT})
  install(FILES ${folder}/${name}.zsh RENAME _${name} DESTINATION ${QUOLL_ZSH_COMPLETIONS}
          COMPONENT ${COMMAND_COMPONENT})
  install(FILES ${folder}/${name}.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
          COMPONENT ${COMMAND_COMPONENT})
endfunction()
