#pragma once

#include "engsys/medium_dialog.h"

namespace edw {

// A ventilation system: supply or exhaust instead of the properties of a medium.
class MediumDialog2 : public IMediumDialog
{
    Q_OBJECT
public:
    MediumDialog2(const MediumRecord& record, bool create, QWidget* parent = nullptr);

    void transfer(bool load) override;
    QString duplicateNameMessage() const override;
    QString missingNameMessage() const override;
    QString missingDesignationMessage() const override;

private:
    QComboBox* m_typeBox = nullptr;
};

} // namespace edw
