// Rooted trees: the general tree, the binary tree and the height-balanced search tree.
#pragma once

#include "GTree/BinaryTree.h"
#include "GTree/HeightBalancedTree.h"
#include "GTree/Trees.h"
