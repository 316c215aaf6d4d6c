#pragma once

#include <lilv/lilv.h>

#include <memory>

namespace conformance
{

struct FreeNode {
    void operator()(LilvNode *node) const { lilv_node_free(node); }
};
struct FreeNodes {
    void operator()(LilvNodes *nodes) const { lilv_nodes_free(nodes); }
};
using NodePointer = std::unique_ptr<LilvNode, FreeNode>;
using NodesPointer = std::unique_ptr<LilvNodes, FreeNodes>;

inline NodePointer uriNode(LilvWorld *world, const char *uri)
{
    return NodePointer(lilv_new_uri(world, uri));
}

} // namespace conformance
