#include "slides/format_control.h"

#include <glib/gi18n.h>

#include <array>

namespace lectern {
namespace {

using Group = FormatControlGroup;
using Id = FormatControlId;

constexpr std::array<FormatControl, 14> controls{{
    {Id::bold, Group::characterStyle, N_("Bold (Ctrl+B)"), "format-text-bold-symbolic", "<Control>b"},
    {Id::italic, Group::characterStyle, N_("Italic (Ctrl+I)"), "format-text-italic-symbolic", "<Control>i"},
    {Id::underline, Group::characterStyle, N_("Underline (Ctrl+U)"), "format-text-underline-symbolic", "<Control>u"},
    {Id::strikethrough, Group::characterStyle, N_("Strikethrough"), "format-text-strikethrough-symbolic", ""},
    {Id::textColor, Group::characterStyle,
     N_("Text color \u2014 opens the system colour panel; colour changes apply to the current text selection."),
     "color-select-symbolic", ""},
    {Id::alignLeft, Group::alignment, N_("Align left"), "format-justify-left-symbolic", ""},
    {Id::alignCenter, Group::alignment, N_("Align center"), "format-justify-center-symbolic", ""},
    {Id::alignRight, Group::alignment, N_("Align right"), "format-justify-right-symbolic", ""},
    {Id::bulletList, Group::list, N_("Bullet list"), "view-list-bullet-symbolic", ""},
    {Id::numberedList, Group::list, N_("Numbered list"), "view-list-ordered-symbolic", ""},
    {Id::indent, Group::list, N_("Indent list item"), "format-indent-more-symbolic", ""},
    {Id::outdent, Group::list, N_("Outdent list item"), "format-indent-less-symbolic", ""},
    {Id::commandBlock, Group::block, N_("Command block"), "utilities-terminal-symbolic", ""},
    {Id::more, Group::overflow, N_("More formatting"), "view-more-symbolic", ""},
}};

}  // namespace

std::span<const FormatControl> formatControls() { return controls; }

bool showsInCompactBar(const FormatControl& control) {
    return control.group == Group::characterStyle || control.group == Group::overflow;
}

EditableSlideBody applyFormatControl(EditableSlideBody body, FormatControlId id) {
    switch (id) {
        case Id::bold: return toggleBold(std::move(body));
        case Id::italic: return toggleItalic(std::move(body));
        case Id::underline: return toggleUnderline(std::move(body));
        case Id::strikethrough: return toggleStrikethrough(std::move(body));
        case Id::alignLeft: return setAlignment(std::move(body), SlideBodyAlignment::leading);
        case Id::alignCenter: return setAlignment(std::move(body), SlideBodyAlignment::center);
        case Id::alignRight: return setAlignment(std::move(body), SlideBodyAlignment::trailing);
        case Id::bulletList: return toggleBulletList(std::move(body));
        case Id::numberedList: return toggleNumberedList(std::move(body));
        case Id::indent: return indentListItems(std::move(body));
        case Id::outdent: return outdentListItems(std::move(body));
        case Id::commandBlock: return toggleCommandBlock(std::move(body));
        case Id::textColor:
        case Id::more: break;
    }
    return body;
}

}  // namespace lectern
