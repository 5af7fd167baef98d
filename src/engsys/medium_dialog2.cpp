#include "engsys/medium_dialog2.h"

#include <QComboBox>
#include <QFormLayout>

namespace edw {

MediumDialog2::MediumDialog2(const MediumRecord& record, bool create, QWidget* parent)
    : IMediumDialog(record, create, parent)
{
    setObjectName(QStringLiteral("MediumDialog2"));
    buildCommon();
    m_typeBox = new QComboBox(propertiesForm()->parentWidget());
    m_typeBox->setObjectName(QStringLiteral("typeBox"));
    // The library shows these texts as they are, leading blank included.
    m_typeBox->addItems({QStringLiteral(" приточная"), QStringLiteral(" вытяжная")});
    propertiesForm()->addRow(QStringLiteral("Тип системы"), m_typeBox);

    transfer(true);
    setWindowTitle(create ? QStringLiteral("Создание новой системы")
                          : QStringLiteral("Свойства текущей системы"));
    finishBuild();
}

void MediumDialog2::transfer(bool load)
{
    transferCommon(load);
    if (load) {
        m_typeBox->setCurrentIndex(record().protoch ? 0 : 1);
        return;
    }
    record().protoch = m_typeBox->currentIndex() == 0;
}

QString MediumDialog2::duplicateNameMessage() const
{
    return QStringLiteral(
        "Система с данным именем уже есть в разделе.\nВведите другое имя системы.");
}

QString MediumDialog2::missingNameMessage() const
{
    return QStringLiteral("Введите имя системы");
}

QString MediumDialog2::missingDesignationMessage() const
{
    return QStringLiteral("Задайте обозначение системы");
}

} // namespace edw
