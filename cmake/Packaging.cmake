# Debian packages of what is installed: cpack in the build folder writes them to
# package/.
#   parvane-host    the program, its content and the stand-in effect
#   libparvane-dev  the animation kit and the support utilities for other programs,
#                   and parvane-curves, which draws the kit's curves
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME parvane-host)
set(CPACK_PACKAGE_VENDOR QRVX)
set(CPACK_PACKAGE_CONTACT "QRVX <support@qrvx.example>")
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://qrvx.example/")
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/package")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL Program DebianProgram Animation ParvaneSupport DebianKit)
set(CPACK_COMPONENT_PROGRAM_GROUP host)
set(CPACK_COMPONENT_DEBIANPROGRAM_GROUP host)
set(CPACK_COMPONENT_ANIMATION_GROUP kit)
set(CPACK_COMPONENT_PARVANESUPPORT_GROUP kit)
set(CPACK_COMPONENT_DEBIANKIT_GROUP kit)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${PARVANE_PACKAGE_RELEASE})
# The loops, nearly all of it, are compressed already.
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip)

set(CPACK_DEBIAN_HOST_PACKAGE_NAME parvane-host)
set(CPACK_DEBIAN_HOST_PACKAGE_SECTION sound)
set(CPACK_COMPONENT_HOST_DESCRIPTION
"stand-alone host for one audio effect
Parvane Host presents one audio effect on its own: it finds the effect among
the LV2 plug-ins of the machine, plays one of eighty demonstration loops
through it, over and over, and shows the effect's own controls. The effect
runs in a process of its own, so that the music goes on when it fails.

A rotating-speaker effect comes with it, which other LV2 hosts can use as
well.")
# Libraries are found by what the program, its modules and the effect link. What is
# found otherwise: the symbols on the buttons.
set(CPACK_DEBIAN_HOST_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_HOST_PACKAGE_DEPENDS adwaita-icon-theme)
# A sound server is not needed where ALSA has a device of its own; the font is the one
# that the manual and the effect's view ask for first.
set(CPACK_DEBIAN_HOST_PACKAGE_RECOMMENDS "pipewire-pulse | pulseaudio, fonts-cantarell")
set(CPACK_DEBIAN_HOST_PACKAGE_SUGGESTS lv2-plugin)
set(CPACK_DEBIAN_HOST_PACKAGE_PROVIDES lv2-plugin)

set(CPACK_DEBIAN_KIT_PACKAGE_NAME libparvane-dev)
set(CPACK_DEBIAN_KIT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_KIT_DESCRIPTION
"animation kit and MIDI vocabulary of Parvane Host
Static libraries, headers, CMake packages and pkg-config files for other
programs: easing curves, animators and what runs many of them; names of MIDI
bytes and meta events; four-character codes.

They need nothing but the standard library; timers on GLib's main loop are
there for programs that have it. The program parvane-curves draws the curves.")
# Of what the program links.
set(CPACK_DEBIAN_KIT_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_KIT_PACKAGE_RECOMMENDS libglib2.0-dev)

include(CPack)
