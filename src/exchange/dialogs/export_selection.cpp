#include "export_selection.h"

#include "library_groups.h"

#include <catalog/catalog_tree.h>
#include <catalog/esconvert.h>

#include <algorithm>
#include <climits>
#include <unordered_set>

namespace exchange {

ExportSelection::ExportSelection(es_provider_t* provider, const QString& libraryRoot,
                                 QStringList* errors)
{
    const int kind = edw::libraryKind(provider);
    std::vector<es_packet_t*> packets;
    QStringList names;
    const uint32_t count = provider_GetPacketCount(provider);
    for (uint32_t i = 0; i < count; ++i) {
        es_packet_t* packet = provider_GetPacket(provider, i);
        packets.push_back(packet);
        names << edw::fromEs(packet_GetName(packet));
    }
    const LibraryGrouping grouping = groupPackets(names, kind, libraryRoot);
    if (errors) *errors << grouping.errors;

    for (const LibraryGroup& group : grouping.groups) {
        Node library;
        library.kind = Library;
        library.name = group.name;
        library.command = group.command;
        library.begin = int(m_chosen.size());
        const int libraryIndex = addNode(std::move(library));
        m_roots.push_back(libraryIndex);
        for (int p : group.packets) {
            Node packet;
            packet.kind = Packet;
            packet.parent = libraryIndex;
            packet.name = packetDisplayName(names[p]);
            const int packetIndex = addNode(std::move(packet));
            m_nodes[size_t(libraryIndex)].children.push_back(packetIndex);
            addFolder(packetIndex, packet_GetRootFolder(packets[size_t(p)]));
        }
        Node& done = m_nodes[size_t(libraryIndex)];
        done.ownEnd = done.begin;
        done.end = int(m_chosen.size());
        done.nodeEnd = int(m_nodes.size());
    }
    m_ids.resize(m_chosen.size());
    m_idRead.resize(m_chosen.size(), false);
}

int ExportSelection::addNode(Node node)
{
    m_nodes.push_back(std::move(node));
    return int(m_nodes.size()) - 1;
}

void ExportSelection::addFolder(int index, es_folder_t* folder)
{
    es_table_t* table = folder_GetTable(folder);
    const int own = int(table_GetStdSizeCount(table));
    {
        Node& node = m_nodes[size_t(index)];
        node.table = table;
        node.begin = int(m_chosen.size());
        node.ownEnd = node.begin + own;
        if (own > 0) m_owners.emplace_back(node.begin, index);
    }
    m_chosen.resize(m_chosen.size() + size_t(own), 0);
    const uint32_t children = folder_GetChildFolderCount(folder);
    for (uint32_t i = 0; i < children; ++i) {
        es_folder_t* child = folder_GetChildFolder(folder, i);
        Node node;
        node.kind = Folder;
        node.parent = index;
        node.name = edw::fromEs(folder_GetName(child));
        const int childIndex = addNode(std::move(node));
        m_nodes[size_t(index)].children.push_back(childIndex);
        addFolder(childIndex, child);
    }
    Node& node = m_nodes[size_t(index)];
    node.end = int(m_chosen.size());
    node.nodeEnd = int(m_nodes.size());
}

ExportSelection::State ExportSelection::state(int index) const
{
    const Node& n = node(index);
    if (n.chosen == 0) return Unchecked;
    return n.chosen == n.end - n.begin ? Checked : Partial;
}

ExportSelection::State ExportSelection::overallState() const
{
    if (m_chosenCount == 0) return Unchecked;
    return m_chosenCount == total() ? Checked : Partial;
}

void ExportSelection::addToAncestors(int index, int delta)
{
    for (int a = index; a >= 0; a = m_nodes[size_t(a)].parent)
        m_nodes[size_t(a)].chosen += delta;
    m_chosenCount += delta;
}

void ExportSelection::setChecked(int index, bool on)
{
    const Node& n = node(index);
    const std::uint8_t value = on ? 1 : 0;
    const int before = n.chosen;
    std::fill(m_chosen.begin() + n.begin, m_chosen.begin() + n.end, value);
    // The subtree is all or nothing now; the nodes above change by the difference.
    for (int i = index; i < n.nodeEnd; ++i) {
        Node& d = m_nodes[size_t(i)];
        d.chosen = on ? d.end - d.begin : 0;
    }
    const int delta = m_nodes[size_t(index)].chosen - before;
    if (n.parent >= 0)
        addToAncestors(n.parent, delta);
    else
        m_chosenCount += delta;
}

void ExportSelection::setElementChosen(int element, bool on)
{
    if (isChosen(element) == on) return;
    m_chosen[size_t(element)] = on ? 1 : 0;
    addToAncestors(ownerOf(element), on ? 1 : -1);
}

void ExportSelection::setAllChosen(bool on)
{
    for (int root : m_roots)
        setChecked(root, on);
}

int ExportSelection::ownerOf(int element) const
{
    auto it = std::upper_bound(m_owners.begin(), m_owners.end(), std::make_pair(element, INT_MAX));
    return it == m_owners.begin() ? -1 : std::prev(it)->second;
}

es_stdsize_t* ExportSelection::elementHandle(int element) const
{
    const int owner = ownerOf(element);
    if (owner < 0) return nullptr;
    const Node& n = node(owner);
    return table_GetStdSize(n.table, uint32_t(element - n.begin));
}

QString ExportSelection::elementId(int element) const
{
    if (!m_idRead[size_t(element)]) {
        m_ids[size_t(element)] = edw::fromEs(stdsize_GetID(elementHandle(element)));
        m_idRead[size_t(element)] = true;
    }
    return m_ids[size_t(element)];
}

std::vector<int> ExportSelection::chosenIndexes() const
{
    std::vector<int> out;
    out.reserve(size_t(m_chosenCount));
    for (size_t i = 0; i < m_chosen.size(); ++i)
        if (m_chosen[i]) out.push_back(int(i));
    return out;
}

std::vector<es_stdsize_t*> ExportSelection::chosenElements() const
{
    std::vector<es_stdsize_t*> out;
    out.reserve(size_t(m_chosenCount));
    std::unordered_set<es_stdsize_t*> seen;
    seen.reserve(size_t(m_chosenCount));
    for (const auto& [begin, owner] : m_owners) {
        const Node& n = node(owner);
        for (int i = begin; i < n.ownEnd; ++i) {
            if (!m_chosen[size_t(i)]) continue;
            es_stdsize_t* e = table_GetStdSize(n.table, uint32_t(i - begin));
            if (e && seen.insert(e).second) out.push_back(e);
        }
    }
    return out;
}

bool ExportSelection::idMatches(int element) const
{
    return elementId(element).contains(m_filter, Qt::CaseInsensitive);
}

void ExportSelection::setFilter(const QString& text)
{
    m_filter = text;
    if (m_filter.isEmpty()) return;
    const size_t count = m_nodes.size();
    m_visible.assign(count, false);
    m_shownWhole.assign(count, false);
    // Pre-order: a parent comes before its children, so the name match runs down in one pass.
    for (size_t i = 0; i < count; ++i) {
        const Node& n = m_nodes[i];
        m_shownWhole[i] = n.name.contains(m_filter, Qt::CaseInsensitive) ||
                          (n.parent >= 0 && m_shownWhole[size_t(n.parent)]);
        bool visible = m_shownWhole[i];
        for (int e = n.begin; !visible && e < n.ownEnd; ++e)
            visible = idMatches(e);
        m_visible[i] = visible;
    }
    // Backwards, children before parents: a shown node shows the nodes above it.
    for (size_t i = count; i-- > 0;)
        if (m_visible[i] && m_nodes[i].parent >= 0) m_visible[size_t(m_nodes[i].parent)] = true;
}

std::vector<int> ExportSelection::listedElements(int index) const
{
    const Node& n = node(index);
    std::vector<int> out;
    const bool all = m_filter.isEmpty() || m_shownWhole[size_t(index)];
    for (int e = n.begin; e < n.ownEnd; ++e)
        if (all || idMatches(e)) out.push_back(e);
    return out;
}

} // namespace exchange
