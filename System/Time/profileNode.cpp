#include "System/Time/profileNode.h"

#include <utility>
#include <vector>

namespace Qel {

Timer ProfileNode::msClock;

ProfileNode::~ProfileNode()
{
    // A tree may be deeper than the stack, so no node is let go while it has another one.
    std::vector<std::unique_ptr<ProfileNode>> left;
    auto const take = [&left](ProfileNode &node) {
        if (node.m_child != nullptr) {
            left.push_back(std::move(node.m_child));
        }
        if (node.m_sibling != nullptr) {
            left.push_back(std::move(node.m_sibling));
        }
    };
    take(*this);
    while (!left.empty()) {
        std::unique_ptr<ProfileNode> const node = std::move(left.back());
        left.pop_back();
        take(*node);
    }
}

ProfileNode *ProfileNode::getSubNode(char const *name)
{
    for (ProfileNode *node = m_child.get(); node != nullptr; node = node->m_sibling.get()) {
        if (node->m_name == name) {
            return node;
        }
    }
    auto node = std::make_unique<ProfileNode>(name, this);
    node->m_sibling = std::move(m_child);
    m_child = std::move(node);
    return m_child.get();
}

void ProfileNode::reset()
{
    ProfileNode *node = this;
    for (;;) {
        node->m_totalCalls = 0;
        node->m_totalTime = 0.0f;
        node->m_peakTime = 0.0f;
        if (node->m_child != nullptr) {
            node = node->m_child.get();
            continue;
        }
        while (node->m_sibling == nullptr) {
            // Up again, but never above the chain that this node is in.
            if (node->m_parent == m_parent) {
                return;
            }
            node = node->m_parent;
        }
        node = node->m_sibling.get();
    }
}

} // namespace Qel
