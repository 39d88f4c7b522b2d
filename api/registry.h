// The catalogue of hands, for the tools, tests and benchmarks built around the library.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/records.h"

namespace quil {

enum class BufferKind { per_call, persistent };

using ExportFn = double* (*)(double, double, double, double, double, double, double, double,
                             double, double, double, double);
using MapFn = TargetArray (*)(const InputAngles&, const MemoryRef&);

struct ModelInfo {
    const char* name;        // class name and export prefix
    const char* version;     // what <name>_GetVersion answers
    BufferKind buffer;
    bool keeps_state;        // remembers pinch latches or thumb references between samples
    MapFn map;               // the mapping against caller-owned memory
    ExportFn get_data_value; // the C export
    const char* (*get_version)();
};

// Every hand, in catalogue order.
const std::vector<ModelInfo>& all_models();

// The hand named exactly `name`, else the one whose name matches ignoring case; null if none.
const ModelInfo* find_model(std::string_view name);

// Up to `count` known names closest to `name` (by edit distance ignoring case), best first.
std::vector<std::string> closest_model_names(std::string_view name, std::size_t count);

const char* buffer_kind_name(BufferKind kind);

}  // namespace quil
