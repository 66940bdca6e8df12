#pragma once

#include "importer.h"

/// The importers of the ONNX operations, by subject.
namespace scribo::builder {

void addConvolutions(ImportTable* table);
void addPooling(ImportTable* table);
void addReductions(ImportTable* table);
void addRecurrent(ImportTable* table);
void addProducts(ImportTable* table);
void addActivations(ImportTable* table);
void addElementwise(ImportTable* table);
void addNormalisation(ImportTable* table);
void addLayout(ImportTable* table);
void addSlicing(ImportTable* table);
void addResizing(ImportTable* table);
void addShapeArithmetic(ImportTable* table);
void addLogic(ImportTable* table);

} // namespace scribo::builder
