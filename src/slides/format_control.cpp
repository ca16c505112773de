#include "slides/format_control.h"

#include <array>

namespace lectern {
namespace {

using Group = FormatControlGroup;
using Id = FormatControlId;

constexpr std::array<FormatControl, 14> controls{{
    {Id::bold, Group::characterStyle, "Bold (Ctrl+B)", "format-text-bold-symbolic", "<Control>b"},
    {Id::italic, Group::characterStyle, "Italic (Ctrl+I)", "format-text-italic-symbolic", "<Control>i"},
    {Id::underline, Group::characterStyle, "Underline (Ctrl+U)", "format-text-underline-symbolic", "<Control>u"},
    {Id::strikethrough, Group::characterStyle, "Strikethrough", "format-text-strikethrough-symbolic", ""},
    {Id::textColor, Group::characterStyle,
     "Text color \u2014 opens the system colour panel; colour changes apply to the current text selection.",
     "color-select-symbolic", ""},
    {Id::alignLeft, Group::alignment, "Align left", "format-justify-left-symbolic", ""},
    {Id::alignCenter, Group::alignment, "Align center", "format-justify-center-symbolic", ""},
    {Id::alignRight, Group::alignment, "Align right", "format-justify-right-symbolic", ""},
    {Id::bulletList, Group::list, "Bullet list", "view-list-bullet-symbolic", ""},
    {Id::numberedList, Group::list, "Numbered list", "view-list-ordered-symbolic", ""},
    {Id::indent, Group::list, "Indent list item", "format-indent-more-symbolic", ""},
    {Id::outdent, Group::list, "Outdent list item", "format-indent-less-symbolic", ""},
    {Id::commandBlock, Group::block, "Command block", "utilities-terminal-symbolic", ""},
    {Id::more, Group::overflow, "More formatting", "view-more-symbolic", ""},
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
