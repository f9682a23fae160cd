# Whatever the prefix is, the program is installed where the panel looks for its administrative tools. The manual pages
# and the completions are installed below the prefix.
include(GNUInstallDirs)
set(TAVEK_ZSH_COMPLETIONS "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" CACHE STRING
  "Where zsh looks for completion functions; distributions use a separate folder for packages")
set(TAVEK_SYSTEMD_UNITS lib/systemd/system CACHE STRING "Where systemd looks for units; if empty, no units are installed")

install(TARGETS tavek-logrotate RUNTIME DESTINATION /opt/oru/admin/sbin)
# The program creates the hosts' files but not their directory.
install(DIRECTORY DESTINATION /opt/oru/etc/logrotate.d)
# The command `tavek-logrotate` starts the program by a path with a slash. If the program were started by a bare name,
# --system-logs would first look for it in the current directory.
install(PROGRAMS commands/tavek-logrotate commands/tavek-logrotate-show commands/tavek-logrotate-preview
  commands/tavek-logrotate-check
  DESTINATION "${CMAKE_INSTALL_SBINDIR}")
install(DIRECTORY companions DESTINATION "${CMAKE_INSTALL_DATADIR}/tavek-logrotate" FILES_MATCHING PATTERN "*.py")
install(FILES logrotate/hosts.conf logrotate/skip-temporary-files.conf
  DESTINATION "${CMAKE_INSTALL_DATADIR}/tavek-logrotate")
if(TAVEK_SYSTEMD_UNITS)
  install(FILES systemd/tavek-logrotate-check.service systemd/tavek-logrotate-check.timer
    DESTINATION "${TAVEK_SYSTEMD_UNITS}")
endif()
install(DIRECTORY contrib/ansible/ DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples/ansible")
install(FILES man/tavek-logrotate.8 man/tavek-logrotate-show.8 man/tavek-logrotate-preview.8 man/tavek-logrotate-check.8
  DESTINATION "${CMAKE_INSTALL_MANDIR}/man8")
install(FILES man/oru.conf.5 DESTINATION "${CMAKE_INSTALL_MANDIR}/man5")
install(FILES man/tavek-logrotate-recipes.7 DESTINATION "${CMAKE_INSTALL_MANDIR}/man7")
# bash-completion finds a file by the name of the command.
install(FILES completion/tavek-logrotate.bash DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
  RENAME tavek-logrotate)
file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/completion")
foreach(command tavek-logrotate-show tavek-logrotate-preview tavek-logrotate-check)
  file(CREATE_LINK tavek-logrotate "${CMAKE_CURRENT_BINARY_DIR}/completion/${command}" SYMBOLIC)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/completion/${command}"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
endforeach()
install(FILES completion/_tavek-logrotate DESTINATION "${TAVEK_ZSH_COMPLETIONS}")
install(FILES completion/tavek-logrotate.fish completion/tavek-logrotate-show.fish completion/tavek-logrotate-preview.fish
  completion/tavek-logrotate-check.fish
  DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
