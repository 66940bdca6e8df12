#!/usr/bin/env bash
# Configures Scribo on machines with different versions of TensorRT.
#
#   tensorrt_test.sh CMAKE SOURCE-FOLDER
set -euo pipefail
cmake=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# make_tensorrt MAJOR MINOR: a folder with what the build looks at.
make_tensorrt() {
    local folder="$work/TensorRT-$1.$2"
    mkdir -p "$folder/include" "$folder/lib"
    touch "$folder/include/NvInfer.h" "$folder/lib/libnvinfer.so"
    printf '#define NV_TENSORRT_%s\n' "MAJOR $1 //!< Major" "MINOR $2 //!< Minor" "PATCH 1 //!< Patch" \
        >"$folder/include/NvInferVersion.h"
}

make_cuda() {
    mkdir -p "$work/cuda/bin" "$work/cuda/include" "$work/cuda/lib64"
    touch "$work/cuda/include/cuda_runtime.h" "$work"/cuda/lib64/lib{cudart,nvToolsExt}.so
    printf '#!/bin/sh\necho "release 11.8, V11.8.89"\necho "#\\$ TOP=%s" >&2\n' "$work/cuda" >"$work/cuda/bin/nvcc"
    chmod +x "$work/cuda/bin/nvcc"
}

# configure BUILD-FOLDER ARGUMENTS: leaves what CMake said in $said, and its status in $status.
configure() {
    local folder="$work/$1"
    shift
    status=0
    said=$("$cmake" -S "$source" -B "$folder" -G Ninja -DCUDAToolkit_ROOT="$work/cuda" "$@" 2>&1) || status=$?
}

# expect STATUS TEXT: what the last configuration must have come to.
expect() {
    # CMake wraps long messages.
    local flat
    flat=$(tr -s ' \n' '  ' <<<"$said")
    if [ "$status" -ne "$1" ] || [[ $flat != *"$2"* ]]; then
        printf 'expected status %s and "%s", got status %s and:\n%s\n' "$1" "$2" "$status" "$said" >&2
        exit 1
    fi
}

make_cuda
make_tensorrt 8 6
make_tensorrt 10 3

configure right -DTensorRT_ROOT="$work/TensorRT-8.6"
expect 0 "Scribo runs networks with: tensorrt"

configure other -DTensorRT_ROOT="$work/TensorRT-10.3"
expect 0 "Scribo runs networks with: cpu"
configure other -DTensorRT_ROOT="$work/TensorRT-10.3" -DSCRIBO_RUNTIME=tensorrt
expect 1 "is not TensorRT 8.6; set TensorRT_ROOT to its folder"
configure other -DTensorRT_ROOT="$work/TensorRT-8.6"
expect 0 "Scribo runs networks with: tensorrt"

configure wrong -DSCRIBO_RUNTIME=gpu
expect 1 "SCRIBO_RUNTIME is 'gpu': use tensorrt or cpu"
