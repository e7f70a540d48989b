#include "runlog.h"

RunLog::RunLog(DialogFixture* fixture)
    : m_fixture(fixture), m_sleep([this](int ms) { m_lines += QStringLiteral("sleep %1").arg(ms); })
{
    fixture->channel.setHook([this](const QString& call) {
        m_lines += call;
        if (m_hook)
            m_hook(call);
    });
}

RunLog::~RunLog()
{
    m_fixture->channel.setHook({});
}

void RunLog::expect(const ExpectedBox& box)
{
    ExpectedBox logged = box;
    logged.inspect = [this, box](QMessageBox& shown) {
        m_lines += QStringLiteral("box ") + shown.text().section(QLatin1Char('\n'), 0, 0);
        if (box.inspect)
            box.inspect(shown);
    };
    m_driver.expect(logged);
}

void RunLog::expectDialog(const QString& objectName, const std::function<void(QDialog&)>& act)
{
    m_driver.expectDialog(objectName, [=](QDialog& dialog) {
        m_lines += QStringLiteral("dialog ") + objectName;
        act(dialog);
    });
}

void RunLog::expectUpdateDialog(const std::function<void()>& act)
{
    expectDialog(QStringLiteral("ZanUpdateModule2GSettingsdlgClass"), [=](QDialog&) { act(); });
}
