#pragma once

#include <lilv/lilv.h>

#include <memory>

namespace platform::lv2
{

/// Calls a C library's own function to free what it handed out.
template <auto release>
struct Release {
    /// Frees what a smart pointer held.
    template <typename T>
    void operator()(T *object) const
    {
        release(object);
    }
};

using WorldPointer = std::unique_ptr<LilvWorld, Release<lilv_world_free>>;
using NodePointer = std::unique_ptr<LilvNode, Release<lilv_node_free>>;
using NodesPointer = std::unique_ptr<LilvNodes, Release<lilv_nodes_free>>;
using StatePointer = std::unique_ptr<LilvState, Release<lilv_state_free>>;

/// Frees an instance, never while another is made or freed: plug-ins of one
/// binary may share what they set up.
struct ReleaseInstance {
    /// Deactivates and frees it; waits while another is being made.
    void operator()(LilvInstance *instance) const;
};
using InstancePointer = std::unique_ptr<LilvInstance, ReleaseInstance>;

} // namespace platform::lv2
