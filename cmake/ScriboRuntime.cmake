# What stands behind the TensorRT and CUDA names that the detector is written against: the target
# Scribo::Runtime, whose include path and link line are the whole difference.

find_path(SCRIBO_TENSORRT_INCLUDE NvInfer.h
    HINTS ${TensorRT_ROOT} ENV TensorRT_ROOT PATH_SUFFIXES include)
find_library(SCRIBO_TENSORRT_LIBRARY nvinfer
    HINTS ${TensorRT_ROOT} ENV TensorRT_ROOT PATH_SUFFIXES lib lib64)
find_package(CUDAToolkit QUIET)

set(tensorrt_version "")
if(EXISTS "${SCRIBO_TENSORRT_INCLUDE}/NvInferVersion.h")
    file(STRINGS ${SCRIBO_TENSORRT_INCLUDE}/NvInferVersion.h tensorrt_version
        REGEX "^#define NV_TENSORRT_(MAJOR|MINOR) ")
    string(REGEX REPLACE "[^0-9;]" "" tensorrt_version "${tensorrt_version}")
    list(JOIN tensorrt_version . tensorrt_version)
endif()

if(tensorrt_version STREQUAL "8.6" AND SCRIBO_TENSORRT_LIBRARY AND CUDAToolkit_FOUND)
    set(scribo_default_runtime tensorrt)
else()
    set(scribo_default_runtime cpu)
endif()
set(SCRIBO_RUNTIME ${scribo_default_runtime} CACHE STRING "What runs the network: tensorrt or cpu")
set_property(CACHE SCRIBO_RUNTIME PROPERTY STRINGS tensorrt cpu)

if(SCRIBO_RUNTIME STREQUAL "tensorrt")
    if(NOT SCRIBO_TENSORRT_INCLUDE OR NOT SCRIBO_TENSORRT_LIBRARY)
        message(FATAL_ERROR "SCRIBO_RUNTIME=tensorrt: TensorRT 8.6 was not found; set TensorRT_ROOT to its folder")
    endif()
    if(NOT CUDAToolkit_FOUND)
        message(FATAL_ERROR "SCRIBO_RUNTIME=tensorrt: the CUDA toolkit was not found; set CUDAToolkit_ROOT to its folder")
    endif()
    if(NOT tensorrt_version STREQUAL "8.6")
        set(refused ${SCRIBO_TENSORRT_INCLUDE})
        unset(SCRIBO_TENSORRT_INCLUDE CACHE) # so that the next configuration looks again
        unset(SCRIBO_TENSORRT_LIBRARY CACHE)
        message(FATAL_ERROR "SCRIBO_RUNTIME=tensorrt: ${refused} is not TensorRT 8.6; set TensorRT_ROOT to its folder")
    endif()
    add_library(scribo_tensorrt INTERFACE)
    # SYSTEM: the 8.6 headers deprecate the binding calls that a dynamic-width engine needs.
    target_include_directories(scribo_tensorrt SYSTEM INTERFACE ${SCRIBO_TENSORRT_INCLUDE})
    target_link_libraries(scribo_tensorrt INTERFACE ${SCRIBO_TENSORRT_LIBRARY} CUDA::cudart)
    add_library(Scribo::Runtime ALIAS scribo_tensorrt)
elseif(SCRIBO_RUNTIME STREQUAL "cpu")
    # runtime/ defines scribo_cpuruntime and the alias Scribo::Runtime.
else()
    message(FATAL_ERROR "SCRIBO_RUNTIME is '${SCRIBO_RUNTIME}': use tensorrt or cpu")
endif()
message(STATUS "Scribo runs networks with: ${SCRIBO_RUNTIME}")
