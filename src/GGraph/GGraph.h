// Directed and undirected graphs of named nodes joined by edges, with integer weights on nodes
// and edges, their stored form, depth-first search, topological order and shortest paths.
#pragma once

#include "GGraph/Base.h"
#include "GGraph/Edges.h"
#include "GGraph/Graphs.h"
#include "GGraph/Nodes.h"
