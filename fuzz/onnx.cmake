# The ONNX importer. A corpus to start from: the models of tests/builder/vectors.
scribo_add_fuzzer(fuzz_onnx SOURCES fuzz_onnx.cpp LIBRARIES scribo_builder)
