// Writes a tree of storages as a compound file, from front to back in one go.
#pragma once

#include "platform/storage.h"

struct StorageNode;

// Puts the file in its place whole, or leaves the old one: STG_E_MEDIUMFULL if the disk or the format's room is full,
// what reading the content gave, or the STG_E_... code of what failed. The path is the product's.
HRESULT WriteCompoundFile(LPCWSTR path, const StorageNode& root);

// The storage's code for a status of the platform.
HRESULT StorageCodeOf(LONG status);
