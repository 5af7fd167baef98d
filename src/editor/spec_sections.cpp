#include "spec_sections.h"

namespace edw {

namespace {

using SectionTable = std::map<QString, QStringList>;

// Shared by the three disciplines, in this order.
QStringList valves()
{
    return {QStringLiteral("Задвижки"),
            QStringLiteral("Клапаны запорные"),
            QStringLiteral("Краны шаровые"),
            QStringLiteral("Затворы поворотные (дисковые)"),
            QStringLiteral("Вентили"),
            QStringLiteral("Клапаны регулирующие"),
            QStringLiteral("Устройства переключающие"),
            QStringLiteral("Элеваторы водоструйные"),
            QStringLiteral("Регуляторы давления рычажные"),
            QStringLiteral("Клапаны обратные"),
            QStringLiteral("Клапаны предохранительные")};
}

SectionTable discipline1()
{
    return {
        {QStringLiteral("Оборудование"),
         {QStringLiteral("Насосы"), QStringLiteral("Фильтры"), QStringLiteral("Ёмкости"),
          QStringLiteral("Резервуары")}},
        {QStringLiteral("Сосуды и аппараты"),
         {QStringLiteral("Днища"), QStringLiteral("Обечайки"), QStringLiteral("Люки"),
          QStringLiteral("Опоры"), QStringLiteral("Прокладки"), QStringLiteral("Заглушки"),
          QStringLiteral("Крышки"), QStringLiteral("Фланцы")}},
        {QStringLiteral("Арматура"), valves()},
        {QStringLiteral("Детали трубопроводов"),
         {QStringLiteral("Отводы и Угольники"), QStringLiteral("Тройники"),
          QStringLiteral("Кресты и Крестовины"), QStringLiteral("Переходы"),
          QStringLiteral("Втулки"), QStringLiteral("Муфты"), QStringLiteral("Заглушки"),
          QStringLiteral("Фланцы"), QStringLiteral("Бурты"), QStringLiteral("Патрубки"),
          QStringLiteral("Седловины"), QStringLiteral("Ревизии"), QStringLiteral("Перекрещивания"),
          QStringLiteral("Компенсирующие петли"), QStringLiteral("Разборные соединения"),
          QStringLiteral("Штуцеры")}},
        {QStringLiteral("Прочие элементы"),
         {QStringLiteral("Прокладки"), QStringLiteral("Элементы санитарно-технических систем"),
          QStringLiteral("Гибкие вставки"), QStringLiteral("Приводы"), QStringLiteral("Опоры"),
          QStringLiteral("Измерительные приборы"), QStringLiteral("Хомуты"),
          QStringLiteral("Фильтры")}},
    };
}

SectionTable discipline2()
{
    return {
        {QStringLiteral("Оборудование"), {QStringLiteral("Насосы"), QStringLiteral("Фильтры")}},
        {QStringLiteral("Арматура"), valves()},
        {QStringLiteral("Детали трубопроводов"),
         {QStringLiteral("Отводы и Угольники"), QStringLiteral("Тройники"),
          QStringLiteral("Отводы-тройники"), QStringLiteral("Кресты и Крестовины"),
          QStringLiteral("Переходы"), QStringLiteral("Втулки"), QStringLiteral("Муфты"),
          QStringLiteral("Заглушки"), QStringLiteral("Фланцы"), QStringLiteral("Бурты"),
          QStringLiteral("Патрубки"), QStringLiteral("Седловины"), QStringLiteral("Ревизии"),
          QStringLiteral("Отступы"), QStringLiteral("Прочистки"), QStringLiteral("Перекрещивания"),
          QStringLiteral("Компенсирующие петли"), QStringLiteral("Разборные соединения"),
          QStringLiteral("Штуцеры")}},
        {QStringLiteral("Прочие элементы"),
         {QStringLiteral("Прокладки"), QStringLiteral("Элементы санитарно-технических систем"),
          QStringLiteral("УГО"), QStringLiteral("Приводы"), QStringLiteral("Опоры"),
          QStringLiteral("Измерительные приборы"), QStringLiteral("Хомуты"),
          QStringLiteral("Фильтры")}},
    };
}

SectionTable discipline3()
{
    QStringList valves3 = valves();
    valves3.append(QStringLiteral("Трехходовые клапаны"));
    return {
        {QStringLiteral("Оборудование"),
         {QStringLiteral("Насосы"), QStringLiteral("Вентиляторы"), QStringLiteral("Кондиционеры"),
          QStringLiteral("Теплообменники"), QStringLiteral("Рекуператоры"),
          QStringLiteral("Шумоглушители"), QStringLiteral("Фильтры воздушные"),
          QStringLiteral("Радиаторы"), QStringLiteral("Конвекторы"),
          QStringLiteral("Расширительные баки"), QStringLiteral("Промежуточные емкости")}},
        {QStringLiteral("Арматура"), valves3},
        {QStringLiteral("Детали трубопроводов"),
         {QStringLiteral("Отводы и Угольники"), QStringLiteral("Тройники"),
          QStringLiteral("Кресты и Крестовины"), QStringLiteral("Переходы"),
          QStringLiteral("Втулки"), QStringLiteral("Муфты"), QStringLiteral("Заглушки"),
          QStringLiteral("Фланцы"), QStringLiteral("Бурты"), QStringLiteral("Седловины"),
          QStringLiteral("Перекрещивания"), QStringLiteral("Компенсирующие петли"),
          QStringLiteral("Разборные соединения"), QStringLiteral("Штуцеры")}},
        {QStringLiteral("Прочие элементы"),
         {QStringLiteral("Прокладки"), QStringLiteral("Элементы санитарно-технических систем"),
          QStringLiteral("Воздухораспределительные и воздухозаборные устройства"),
          QStringLiteral("Гибкие вставки"), QStringLiteral("Обратные клапаны и воздушные заслонки"),
          QStringLiteral("Зонты"), QStringLiteral("Дефлекторы"),
          QStringLiteral("Противопожарные клапаны"), QStringLiteral("Приводы"),
          QStringLiteral("Опоры"), QStringLiteral("Измерительные приборы"),
          QStringLiteral("Хомуты"), QStringLiteral("Фильтры")}},
        {QStringLiteral("Детали воздуховодов"),
         {QStringLiteral("Отводы"), QStringLiteral("Переходы"), QStringLiteral("Тройники"),
          QStringLiteral("Крестовины"), QStringLiteral("Заглушки")}},
    };
}

} // namespace

const std::map<QString, QStringList>& specSections(int disciplineCode)
{
    // Function-local statics: the language guarantees one complete construction even when
    // several threads ask first at the same time.
    switch (disciplineCode) {
    case 1: {
        static const SectionTable table = discipline1();
        return table;
    }
    case 2: {
        static const SectionTable table = discipline2();
        return table;
    }
    case 3: {
        static const SectionTable table = discipline3();
        return table;
    }
    default: {
        static const SectionTable empty;
        return empty;
    }
    }
}

QStringList specSubsections(int disciplineCode, const QString& section)
{
    const auto& table = specSections(disciplineCode);
    const auto it = table.find(section);
    return it == table.end() ? QStringList() : it->second;
}

} // namespace edw
