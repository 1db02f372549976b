// SPDX-License-Identifier: Apache-2.0

#include "fileset/LinkWalk.h"

namespace Halvern::FileLink {

void LinkWalk::Enter(const NodePointer& node)
{
    const qsizetype before = m_openPaths.size();
    m_openPaths.insert(node->PathNumber());
    m_open.push_back({node, 0, m_openPaths.size() > before});
}

LinkWalk::NodePointer LinkWalk::NextChild()
{
    Step& step = m_open.back();
    const QList<NodePointer>& children = step.node->Children(m_openPaths);
    return step.next < children.size() ? children[step.next++] : nullptr;
}

void LinkWalk::Leave()
{
    const Step& step = m_open.back();
    if (step.isFirst)
        m_openPaths.remove(step.node->PathNumber());
    step.node->ForgetChildren();
    m_open.pop_back();
}

} // namespace Halvern::FileLink
