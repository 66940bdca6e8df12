# OneDNN::dnnl. Debian's own package configuration asks for the OpenCL headers, which the processor
# half of the library does without.
find_path(OneDNN_INCLUDE_DIR oneapi/dnnl/dnnl.hpp)
find_library(OneDNN_LIBRARY dnnl)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(OneDNN REQUIRED_VARS OneDNN_LIBRARY OneDNN_INCLUDE_DIR)
if(OneDNN_FOUND AND NOT TARGET OneDNN::dnnl)
    add_library(OneDNN::dnnl UNKNOWN IMPORTED)
    set_target_properties(OneDNN::dnnl PROPERTIES
        IMPORTED_LOCATION ${OneDNN_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${OneDNN_INCLUDE_DIR})
endif()
