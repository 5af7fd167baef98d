#include "formula.h"

#include "esconvert.h"
#include "notify.h"

#include "xml_file_p.h"

#include <stdexcept>

namespace edw {

namespace {

// A failure that ends the conversion of the whole formula.
struct FormulaError
{
    QString message;
};

struct Split
{
    QString plain;
    QString block;
    qsizetype next = 0;
};

// The next plain part and the next braced block of text from position p.
Split splitNext(const QString& text, qsizetype p, const QString& wholeFormula)
{
    const qsizetype open = text.indexOf(QLatin1Char('{'), p);
    if (open < 0) return {text.mid(p), QString(), text.size()};
    int depth = 1;
    for (qsizetype i = open + 1; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('}'))
            --depth;
        else if (c == QLatin1Char('{'))
            ++depth;
        if (depth == 0) return {text.mid(p, open - p), text.mid(open + 1, i - open - 1), i + 1};
    }
    throw FormulaError{QStringLiteral("Не найден закрывающий символ } для ") + wholeFormula};
}

bool isOperation(const QString& block)
{
    for (const QChar c : block) {
        if (c == QLatin1Char('*') || c == QLatin1Char('/') || c == QLatin1Char('+') ||
            c == QLatin1Char('-'))
            return true;
    }
    return false;
}

QString convertBlock(const QString& block, es_table_t* table, const QString& wholeFormula);

// Plain parts kept, each block converted; withBraces puts the converted block back in braces.
QString convertText(const QString& text, es_table_t* table, const QString& wholeFormula,
                    bool withBraces)
{
    QString result;
    qsizetype p = 0;
    while (true) {
        const Split part = splitNext(text, p, wholeFormula);
        result += part.plain;
        if (!part.block.isEmpty()) {
            const QString converted = convertBlock(part.block, table, wholeFormula);
            result += withBraces ? QLatin1Char('{') + converted + QLatin1Char('}') : converted;
        }
        p = part.next;
        if (p < 0 || p >= text.size()) break;
    }
    return result;
}

QString convertBlock(const QString& block, es_table_t* table, const QString& wholeFormula)
{
    if (block.contains(QLatin1Char('{'))) return convertText(block, table, wholeFormula, false);
    if (isOperation(block)) return block;
    const bool rReference = block.endsWith(QLatin1String(",R"));
    const QString name = rReference ? block.left(block.size() - 2) : block;
    es_attribute_t* attribute = table_FindAttribute(table, toEs(name).c_str());
    if (!attribute)
        throw FormulaError{QStringLiteral("Блок не является операцией или атрибутом: ") + block};
    const QString number = QString::number(attribute_GetNumber(attribute));
    if (!rReference) return QLatin1Char('A') + number;
    if (attribute_GetType(attribute) == ES_ATTR_TEXT)
        throw FormulaError{
            QStringLiteral("Атрибут %1 строкого вида и не может использоваться при вычислениях")
                .arg(name)};
    return QStringLiteral("R(A") + number + QLatin1Char(')');
}

} // namespace

FormulaResult convertFormula(const QString& formula, es_table_t* table)
{
    try {
        return {convertText(formula, table, formula, true), QString()};
    } catch (const FormulaError& e) {
        return {QString(), e.message};
    }
}

void convertSpecFormulas(std::vector<SpecDescription>& specs, es_stdsize_t* element)
{
    es_table_t* table = stdsize_GetTable(element);
    for (SpecDescription& spec : specs) {
        for (SpecColumn& column : spec.columns) {
            const FormulaResult result = convertFormula(column.formula, table);
            if (!result.error.isEmpty()) {
                messenger().warning(
                    QStringLiteral(" "),
                    QStringLiteral("Не смогли сконвертировать формулу для колонки %1 "
                                   "спецификации %2.\nФормула: %3\nОшибка: %4")
                        .arg(column.num)
                        .arg(spec.styleNum)
                        .arg(column.formula, result.error));
            }
            column.formula = result.text;
        }
    }
}

QString commandType(const QString& descriptionFile, const QString& command)
{
    pugi::xml_document doc;
    const pugi::xml_parse_result loaded = loadXmlFile(doc, descriptionFile);
    if (!loaded) {
        messenger().warning(QStringLiteral(" "),
                            QStringLiteral("Ошибка чтения xml\nfile: %1\ndesc: %2\noffset: %3")
                                .arg(descriptionFile, QString::fromUtf8(loaded.description()))
                                .arg(static_cast<qlonglong>(loaded.offset)));
        return {};
    }
    QString type;
    try {
        const QString query = QStringLiteral("/*/command[@name='%1']").arg(command);
        const pugi::xpath_node node = doc.select_node(query.toStdString().c_str());
        const pugi::xml_attribute attribute = node.node().attribute("type");
        type = attribute ? QString::fromUtf8(attribute.value()) : QStringLiteral("NONE");
    } catch (const pugi::xpath_exception&) {
    }
    return type;
}

} // namespace edw
