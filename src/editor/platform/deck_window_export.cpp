// "Export as PDF…": the deck's pages, or its handout pages with the
// presenter notes, written off the main thread through the same export as
// `lectern-cli export`. A long export shows its progress in a toast with
// Cancel; the file appears at its name only once it is whole.

#include <atomic>
#include <optional>
#include <utility>

#include <glib/gi18n.h>

#include "base/platform/file_chooser.h"
#include "base/platform/accessible.h"
#include "base/translation.h"
#include "editor/platform/deck_window.h"
#include "slides/deck_previews.h"

namespace lectern {

namespace {

// Quick exports finish without a progress toast flashing by.
constexpr double progressDelaySeconds = 0.5;
constexpr double progressRefreshSeconds = 0.1;

std::string pdfFileName(const Deck& deck, const std::optional<std::filesystem::path>& package) {
    std::string name = deck.title && !deck.title->empty() ? *deck.title
                       : package                          ? package->stem().string()
                                                          : std::string(_("Untitled Deck"));
    for (char& c : name) {
        if (c == '/' || c == '\0') c = '-';
    }
    return name + ".pdf";
}

// The folder the last export went to in this run, else Documents.
std::filesystem::path& lastExportFolder() {
    static std::filesystem::path folder;
    return folder;
}

std::filesystem::path exportFolder() {
    if (!lastExportFolder().empty() && std::filesystem::is_directory(lastExportFolder())) return lastExportFolder();
    if (const char* documents = g_get_user_special_dir(G_USER_DIRECTORY_DOCUMENTS)) return documents;
    return g_get_home_dir();
}

}  // namespace

// One export under way: the worker thread writes `done` and reads
// `cancelled`; everything else is the main thread's.
struct DeckWindow::PdfExport {
    std::atomic<std::size_t> done{0};
    std::size_t total = 0;
    std::atomic<bool> cancelled{false};
    std::optional<Status> result;
    GObjectRef<AdwToast> toast;
    Gtk::ProgressBar* bar = nullptr;
    Scheduler::TimerId timer = 0;
};

void DeckWindow::exportAsPdf() {
    if (exportAnswerForTesting_) {
        auto [pdf, withNotes] = *std::exchange(exportAnswerForTesting_, std::nullopt);
        startExport(pdf, withNotes);
        return;
    }
    exportDialog_ = Gtk::FileChooserNative::create(_("Export as PDF"), *this, Gtk::FileChooser::Action::SAVE,
                                                   _("_Export"), _("_Cancel"));
    exportDialog_->set_modal(true);
    exportDialog_->set_current_name(pdfFileName(deck(), package()));
    exportDialog_->set_current_folder(Gio::File::create_for_path(exportFolder().string()));
    exportDialog_->add_choice("notes", _("Include presenter notes"));
    exportDialog_->set_choice("notes", "false");
    auto filter = Gtk::FileFilter::create();
    filter->set_name(_("PDF documents"));
    filter->add_mime_type("application/pdf");
    exportDialog_->add_filter(filter);
    exportDialog_->signal_response().connect([this](int response) {
        auto dialog = heldPastResponse(std::exchange(exportDialog_, {}));
        auto file = response == Gtk::ResponseType::ACCEPT ? dialog->get_file() : Glib::RefPtr<Gio::File>();
        if (!file || file->get_path().empty()) return;
        std::filesystem::path pdf = file->get_path();
        if (pdf.extension() != ".pdf") pdf += ".pdf";
        startExport(pdf, dialog->get_choice("notes") == "true");
    });
    exportDialog_->show();
}

void DeckWindow::answerNextExportForTesting(std::filesystem::path pdf, bool withNotes) {
    exportAnswerForTesting_ = std::make_pair(std::move(pdf), withNotes);
}

void DeckWindow::startExport(const std::filesystem::path& pdf, bool withNotes) {
    if (pdfExport_) {
        showToast(_("An export is already under way."));
        return;
    }
    auto job = std::make_shared<PdfExport>();
    job->total = deck().slides.size();
    pdfExport_ = job;
    lastExportFolder() = pdf.parent_path();
    job->timer = scheduler_.after(progressDelaySeconds, [this, job] { showExportProgress(*job); });
    exportWorker_.run(
        [job, deck = deck(), pdf, withNotes] {
            PdfExportOptions options;
            options.withNotes = withNotes;
            options.progress = [&job](std::size_t done, std::size_t) {
                job->done = done;
                return !job->cancelled;
            };
            job->result = exportPdf(deck, pdf, options);
        },
        [this, job, pdf] { exportFinished(*job, pdf); });
}

void DeckWindow::showExportProgress(PdfExport& job) {
    job.timer = 0;
    if (!job.toast) {
        auto* content = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 12);
        content->append(*Gtk::make_managed<Gtk::Label>(_("Exporting as PDF…")));
        job.bar = Gtk::make_managed<Gtk::ProgressBar>();
        job.bar->set_valign(Gtk::Align::CENTER);
        job.bar->set_size_request(160, -1);
        setAccessibleLabel(*job.bar, _("Export progress"));
        content->append(*job.bar);
        job.toast = GObjectRef<AdwToast>::take(adw_toast_new(""));
        adw_toast_set_custom_title(job.toast.get(), GTK_WIDGET(content->gobj()));
        adw_toast_set_timeout(job.toast.get(), 0);
        adw_toast_set_button_label(job.toast.get(), _("Cancel"));
        // The export, not the window, hears the button: it may outlive both.
        auto* cancelled = new std::weak_ptr<PdfExport>(pdfExport_);
        g_signal_connect_data(job.toast.get(), "button-clicked", G_CALLBACK(+[](AdwToast*, gpointer data) {
                                  if (auto job = static_cast<std::weak_ptr<PdfExport>*>(data)->lock()) {
                                      job->cancelled = true;
                                  }
                              }),
                              cancelled, [](gpointer data, GClosure*) { delete static_cast<std::weak_ptr<PdfExport>*>(data); },
                              GConnectFlags(0));
        adw_toast_overlay_add_toast(toasts_.get(), ADW_TOAST(g_object_ref(job.toast.get())));
    }
    if (job.total > 0) job.bar->set_fraction(static_cast<double>(job.done) / static_cast<double>(job.total));
    job.timer = scheduler_.after(progressRefreshSeconds, [this, &job] { showExportProgress(job); });
}

void DeckWindow::exportFinished(PdfExport& job, const std::filesystem::path& pdf) {
    if (job.timer) scheduler_.cancel(job.timer);
    job.timer = 0;
    if (job.toast) adw_toast_dismiss(job.toast.get());
    auto keep = std::exchange(pdfExport_, {});
    if (job.cancelled) {
        showToast(_("Export cancelled"));
        return;
    }
    if (!job.result || !*job.result) {
        std::string why = job.result ? job.result->error().message : std::string();
        showToast(formatText(_("Couldn’t export the PDF: %s"), why.c_str()));
        return;
    }
    char* escaped = g_markup_escape_text(formatText(_("Exported “%s”"), pdf.filename().c_str()).c_str(), -1);
    AdwToast* toast = adw_toast_new(escaped);
    g_free(escaped);
    if (char* uri = g_filename_to_uri(pdf.c_str(), nullptr, nullptr)) {
        adw_toast_set_button_label(toast, _("Open"));
        g_signal_connect_data(toast, "button-clicked", G_CALLBACK(+[](AdwToast*, gpointer data) {
                              g_app_info_launch_default_for_uri_async(static_cast<const char*>(data), nullptr,
                                                                      nullptr, nullptr, nullptr);
                          }),
                              uri, [](gpointer data, GClosure*) { g_free(data); }, GConnectFlags(0));
    }
    adw_toast_overlay_add_toast(toasts_.get(), toast);
}

void DeckWindow::cancelExport() {
    if (!pdfExport_) return;
    pdfExport_->cancelled = true;
    if (pdfExport_->timer) scheduler_.cancel(pdfExport_->timer);
    pdfExport_->timer = 0;
}

}  // namespace lectern
