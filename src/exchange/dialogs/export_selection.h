#pragma once

// What the export dialog lets the user choose from: libraries, their packets, the folders of
// each packet, and the elements of each folder, with the choice of every element. Built from
// the names and element counts of the catalog alone; element ids and handles are read only
// when something shows or exports them.

#include <esdata/esdata.h>

#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace exchange {

class ExportSelection
{
public:
    enum Kind
    {
        Library,
        Packet,
        Folder
    };
    enum State
    {
        Unchecked,
        Partial,
        Checked
    };

    struct Node
    {
        Kind kind = Folder;
        int parent = -1;
        int nodeEnd = 0; // one past the last node of the subtree (nodes are in pre-order)
        std::vector<int> children;
        QString name;                // as shown: library name, packet display name or folder name
        QString command;             // a library's toolbar command
        es_table_t* table = nullptr; // a packet's (its root folder's) or a folder's
        // Element indexes: the node's own elements [begin, ownEnd), its subtree's [begin, end).
        int begin = 0;
        int ownEnd = 0;
        int end = 0;
        int chosen = 0; // chosen elements of the subtree
    };

    // Reads the catalog's packets, folders and element counts and groups the packets by the
    // library configuration files below libraryRoot. Texts of configuration files that could
    // not be read go to errors. Throws std::runtime_error("Unknown user database") for a
    // catalog of unknown kind.
    ExportSelection(es_provider_t* provider, const QString& libraryRoot,
                    QStringList* errors = nullptr);

    const std::vector<Node>& nodes() const { return m_nodes; }
    const Node& node(int index) const { return m_nodes[size_t(index)]; }
    const std::vector<int>& roots() const { return m_roots; }

    int total() const { return int(m_chosen.size()); }
    int chosenCount() const { return m_chosenCount; }
    State state(int node) const;
    State overallState() const;
    bool isChosen(int element) const { return m_chosen[size_t(element)] != 0; }

    // Chooses or clears every element below node.
    void setChecked(int node, bool on);
    void setElementChosen(int element, bool on);
    void setAllChosen(bool on);

    // The element's id, read from the catalog on first use.
    QString elementId(int element) const;
    es_stdsize_t* elementHandle(int element) const;
    // The node whose own elements hold element.
    int ownerOf(int element) const;

    // The chosen elements in tree order, each once.
    std::vector<es_stdsize_t*> chosenElements() const;
    // Indexes of the chosen elements in tree order.
    std::vector<int> chosenIndexes() const;

    // Narrows what is shown to nodes whose name, and elements whose id, contains text
    // (case-insensitive), with the nodes above them; below a node whose name matches
    // everything is shown. An empty text shows everything. Choices are not touched.
    void setFilter(const QString& text);
    const QString& filter() const { return m_filter; }
    bool isVisible(int node) const { return m_filter.isEmpty() || m_visible[size_t(node)]; }
    // The node's own elements that the filter lets through.
    std::vector<int> listedElements(int node) const;

private:
    int addNode(Node node);
    void addFolder(int index, es_folder_t* folder);
    void addToAncestors(int node, int delta);
    bool idMatches(int element) const;

    std::vector<Node> m_nodes;
    std::vector<int> m_roots;
    std::vector<std::uint8_t> m_chosen;
    std::vector<std::pair<int, int>> m_owners; // (begin, node) of nodes with own elements
    mutable std::vector<QString> m_ids;
    mutable std::vector<bool> m_idRead;
    int m_chosenCount = 0;
    QString m_filter;
    std::vector<bool> m_visible;
    std::vector<bool> m_shownWhole; // the node or a node above it matches by name
};

} // namespace exchange
