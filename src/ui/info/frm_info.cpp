#include "ui/info/frm_info.h"

#include <utility>

#include "ui/base/program_version.h"

namespace regvex::ui::info {

frmInfo::frmInfo(InfoControls controls, InfoServices services, std::string explanation)
    : c_(controls), s_(std::move(services)), explanation_(std::move(explanation)) {}

void frmInfo::Form_Load() {
    s_.view.SetWindowIcon();
    c_.form.SetCaption(kInfoCaption);
    c_.txtInfo.SetCaption(explanation_);
}

void frmInfo::Form_QueryUnload() {
    if (s_.main_window_on_close) {
        s_.main_window_on_close();
    }
}

void frmInfo::cmdCopy_Click() {
    // The whole explanation, as shown, whatever part of it is selected.
    if (!s_.clipboard.SetText(explanation_)) {
        ShowMessage(s_.dialogs, s_.theme, kNotCopied, mb::kExclamation, kProductName);
    }
}

void frmInfo::cmdClose_Click() {
    s_.view.Close();
}

}  // namespace regvex::ui::info
