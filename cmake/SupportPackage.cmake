# What other programs can have of the MIDI vocabulary and the support utilities: the
# part that needs nothing but the standard library.
#   find_package(ParvaneSupport), ParvaneSupport::midi, ParvaneSupport::support
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/ParvaneSupport")
set(header_dir "${CMAKE_INSTALL_INCLUDEDIR}/parvane")

set_target_properties(support_base PROPERTIES EXPORT_NAME support)
install(TARGETS midi support_base foundation_base
    EXPORT ParvaneSupport
    COMPONENT ParvaneSupport
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}/parvane"
    INCLUDES DESTINATION "${header_dir}")
install(FILES MIDI/MIDIConstants.hpp MIDI/MyMetaEvent.hpp
    DESTINATION "${header_dir}/MIDI"
    COMPONENT ParvaneSupport)
install(FILES Support/Capitals.hpp Support/FourCharacterCode.hpp
    DESTINATION "${header_dir}/Support"
    COMPONENT ParvaneSupport)

# There is nothing else to find, so the list of targets is the package.
install(EXPORT ParvaneSupport
    NAMESPACE ParvaneSupport::
    FILE ParvaneSupportConfig.cmake
    DESTINATION "${package_dir}"
    COMPONENT ParvaneSupport)
write_basic_package_version_file(
    "${CMAKE_CURRENT_BINARY_DIR}/ParvaneSupportConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/ParvaneSupportConfigVersion.cmake"
    DESTINATION "${package_dir}"
    COMPONENT ParvaneSupport)
