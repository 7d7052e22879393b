// The rows every model file has in its three constant layout tables, in the order
// they are added: the layout algorithms, the data types of parameter values and the
// parameter names. A file that lacks any of them gains it when it is loaded.
//
// A parameter X with X_MIN and X_MAX beside it is a value with its lower and upper
// bound; all three are parameters in their own right, stored the same way.
#pragma once

#include <array>

namespace tessmeta {

struct SLayoutConstant {
    const char* name;
    const char* description;
};

inline constexpr std::array<SLayoutConstant, 4> kLayoutAlgorithms{{
    {"Force", "Force-Directed Layout Algorithm"},
    {"Layered", "Layered Layout Algorithm"},
    {"Circle", "Circle Layout Algorithm"},
    {"Random", "Random Layout Algorithm"},
}};

inline constexpr std::array<SLayoutConstant, 2> kLayoutDataTypes{{
    {"Integer", "Integer Data Type"},
    {"Float", "Floating-Point Data Type"},
}};

#define TESS_FORCE_PARAM(name) \
    { name, "Force-Directed Layout Parameter" }
#define TESS_LAYERED_PARAM(name) \
    { name, "Layered Layout Parameter" }
#define TESS_CIRCLE_PARAM(name) \
    { name, "Circle Layout Parameter" }
#define TESS_RANDOM_PARAM(name) \
    { name, "Random Layout Parameter" }

inline constexpr std::array<SLayoutConstant, 55> kLayoutPropertyNames{{
    // 16 parameters of the force-directed algorithm
    TESS_FORCE_PARAM("FORCE_ALGORITHM"),
    TESS_FORCE_PARAM("FORCE_FLAGS"),
    TESS_FORCE_PARAM("FORCE_START_V_MIN"),
    TESS_FORCE_PARAM("FORCE_START_V_MAX"),
    TESS_FORCE_PARAM("FORCE_START_V"),
    TESS_FORCE_PARAM("FORCE_START_H_MIN"),
    TESS_FORCE_PARAM("FORCE_START_H_MAX"),
    TESS_FORCE_PARAM("FORCE_START_H"),
    TESS_FORCE_PARAM("FORCE_GRAPH_H_SEP_MIN"),
    TESS_FORCE_PARAM("FORCE_GRAPH_H_SEP_MAX"),
    TESS_FORCE_PARAM("FORCE_GRAPH_H_SEP"),
    TESS_FORCE_PARAM("FORCE_NODE_DIST_MIN"),
    TESS_FORCE_PARAM("FORCE_NODE_DIST_MAX"),
    TESS_FORCE_PARAM("FORCE_NODE_DIST"),
    TESS_FORCE_PARAM("FORCE_ARG1"),
    TESS_FORCE_PARAM("FORCE_ARG2"),
    // 22 of the layered algorithm
    TESS_LAYERED_PARAM("LAYERED_ALGORITHM"),
    TESS_LAYERED_PARAM("LAYERED_TECHNIQUE"),
    TESS_LAYERED_PARAM("LAYERED_FLAGS"),
    TESS_LAYERED_PARAM("LAYERED_START_V_MIN"),
    TESS_LAYERED_PARAM("LAYERED_START_V_MAX"),
    TESS_LAYERED_PARAM("LAYERED_START_V"),
    TESS_LAYERED_PARAM("LAYERED_STEP_V_MIN"),
    TESS_LAYERED_PARAM("LAYERED_STEP_V_MAX"),
    TESS_LAYERED_PARAM("LAYERED_STEP_V"),
    TESS_LAYERED_PARAM("LAYERED_START_H_MIN"),
    TESS_LAYERED_PARAM("LAYERED_START_H_MAX"),
    TESS_LAYERED_PARAM("LAYERED_START_H"),
    TESS_LAYERED_PARAM("LAYERED_STEP_H_MIN"),
    TESS_LAYERED_PARAM("LAYERED_STEP_H_MAX"),
    TESS_LAYERED_PARAM("LAYERED_STEP_H"),
    TESS_LAYERED_PARAM("LAYERED_GRAPH_H_SEP_MIN"),
    TESS_LAYERED_PARAM("LAYERED_GRAPH_H_SEP_MAX"),
    TESS_LAYERED_PARAM("LAYERED_GRAPH_H_SEP"),
    TESS_LAYERED_PARAM("LAYERED_ARG1_MIN"),
    TESS_LAYERED_PARAM("LAYERED_ARG1_MAX"),
    TESS_LAYERED_PARAM("LAYERED_ARG1"),
    TESS_LAYERED_PARAM("LAYERED_ARG2"),
    // 7 of the circle algorithm
    TESS_CIRCLE_PARAM("CIRCLE_FLAGS"),
    TESS_CIRCLE_PARAM("CIRCLE_DENSITY_MIN"),
    TESS_CIRCLE_PARAM("CIRCLE_DENSITY_MAX"),
    TESS_CIRCLE_PARAM("CIRCLE_DENSITY"),
    TESS_CIRCLE_PARAM("CIRCLE_GRAPH_H_SEP_MIN"),
    TESS_CIRCLE_PARAM("CIRCLE_GRAPH_H_SEP_MAX"),
    TESS_CIRCLE_PARAM("CIRCLE_GRAPH_H_SEP"),
    // 10 of the random algorithm
    TESS_RANDOM_PARAM("RANDOM_FLAGS"),
    TESS_RANDOM_PARAM("RANDOM_MAX_H_MIN"),
    TESS_RANDOM_PARAM("RANDOM_MAX_H_MAX"),
    TESS_RANDOM_PARAM("RANDOM_MAX_H"),
    TESS_RANDOM_PARAM("RANDOM_MAX_V_MIN"),
    TESS_RANDOM_PARAM("RANDOM_MAX_V_MAX"),
    TESS_RANDOM_PARAM("RANDOM_MAX_V"),
    TESS_RANDOM_PARAM("RANDOM_GRAPH_H_SEP_MIN"),
    TESS_RANDOM_PARAM("RANDOM_GRAPH_H_SEP_MAX"),
    TESS_RANDOM_PARAM("RANDOM_GRAPH_H_SEP"),
}};

#undef TESS_FORCE_PARAM
#undef TESS_LAYERED_PARAM
#undef TESS_CIRCLE_PARAM
#undef TESS_RANDOM_PARAM

}  // namespace tessmeta
