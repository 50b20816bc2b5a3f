#include "qx4d/core/XmlNode.h"

namespace qx4d {

XmlNode::~XmlNode()
{
    // Children are detached onto a work list before they die, so each destructor that
    // runs finds no children of its own and the depth of the tree costs no stack.
    std::vector<std::unique_ptr<XmlNode>> pending = std::move(children);
    while (!pending.empty()) {
        std::unique_ptr<XmlNode> node = std::move(pending.back());
        pending.pop_back();
        for (auto& child : node->children) pending.push_back(std::move(child));
        node->children.clear();
    }
}

}  // namespace qx4d
