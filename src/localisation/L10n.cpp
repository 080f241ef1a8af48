#include "localisation/L10n.h"

#include "localisation/AppLanguage.h"

#include <QHash>

namespace pelloran::L10n {

namespace {

struct Text {
    QStringView key;
    QStringView chinese;
    QStringView english;
};

constexpr Text texts[] = {
    {u"app.tooltip", u"Pelloran · 炉石传说助手", u"Pelloran · Hearthstone helper"},
    {u"menu.toggleOverlay", u"显示/隐藏悬浮窗", u"Show/Hide Overlay"},
    {u"menu.refresh", u"立即刷新", u"Refresh Now"},
    {u"menu.checkConfig", u"检查配置更新", u"Check Config Update"},
    {u"menu.checkAppUpdate", u"检查应用更新", u"Check App Update"},
    {u"menu.language", u"语言 / Language", u"Language"},
    {u"menu.quit", u"退出 Pelloran", u"Quit Pelloran"},
    {u"lang.system", u"跟随系统", u"System"},
    {u"update.title.available", u"发现新版本", u"Update Available"},
    {u"update.title.upToDate", u"已是最新版本", u"You’re up to date"},
    {u"update.title.skipped", u"已跳过此版本", u"Version skipped"},
    {u"update.title.offline", u"无法检查更新", u"Can’t check for updates"},
    {u"update.title.failed", u"检查更新失败", u"Update check failed"},
    {u"update.body.available", u"当前版本 %@，最新版本 %@。\n是否立即下载更新？",
     u"You have %@; latest is %@.\nDownload the update now?"},
    {u"update.body.upToDate", u"当前已是最新版本。\n本地 %@ · 远端 %@",
     u"You’re already on the latest version.\nLocal %@ · Remote %@"},
    {u"update.body.skipped", u"你已选择跳过版本 %@。\n本地 %@ · 可在菜单中再次检查更新。",
     u"You skipped version %@.\nLocal %@. Use the menu to check again."},
    {u"update.body.offline", u"暂时无法连接更新服务器：%@", u"Could not reach the update server: %@"},
    {u"update.btn.updateNow", u"立即更新", u"Update Now"},
    {u"update.btn.skipVersion", u"跳过这个版本", u"Skip This Version"},
    {u"update.btn.ignore", u"忽略", u"Ignore"},
    {u"update.btn.ok", u"好", u"OK"},
    {u"update.err.badURL", u"更新服务 URL 无效", u"Invalid update server URL"},
    {u"update.err.http", u"更新服务 HTTP %d", u"Update server HTTP %d"},
    {u"update.err.invalidLatest", u"远端 latest.json 无效", u"Invalid remote latest.json"},
    {u"update.err.noDownloadURL", u"远端未提供下载地址", u"No download URL in latest.json"},
    {u"fatal.loadTitle", u"加载胜率数据失败", u"Failed to load win-rate data"},
    {u"idle.waitDraft", u"等待进入竞技场选卡界面…", u"Waiting for Arena draft…"},
    {u"idle.waitArena", u"等待进入竞技场…", u"Waiting for Arena…"},
    {u"idle.boot", u"本地配置 · %@ · 后台同步中… · 等待进入竞技场选卡界面…",
     u"Local config · %@ · syncing… · Waiting for Arena draft…"},
    {u"idle.line", u"%@ · 等待进入竞技场选卡界面…", u"%@ · Waiting for Arena draft…"},
    {u"idle.hashBundled", u"内置", u"bundled"},
    {u"sync.upToDate", u"配置已最新 · %@", u"Config up to date · %@"},
    {u"sync.updated", u"配置已更新 · %@", u"Config updated · %@"},
    {u"sync.offline", u"离线本地配置 · %@", u"Offline local config · %@"},
    {u"sync.failed", u"内置/本地配置 · %@", u"Bundled/local config · %@"},
    {u"overlay.arena", u"Pelloran · 竞技场", u"Pelloran · Arena"},
    {u"overlay.heroPick", u"Pelloran · 选英雄", u"Pelloran · Hero Pick"},
    {u"overlay.cardPick", u"Pelloran · 选牌", u"Pelloran · Card Pick"},
    {u"overlay.unrecognized", u"未识别", u"Unrecognized"},
    {u"overlay.noWindow", u"已在竞技场，但未找到炉石窗口", u"In Arena, but Hearthstone window not found"},
    {u"overlay.captureFailed", u"截屏失败：请在系统设置中授权「屏幕录制」后重启 Pelloran",
     u"Capture failed: grant Screen Recording in System Settings, then relaunch Pelloran"},
    {u"slot.left", u"左", u"L"},
    {u"slot.middle", u"中", u"M"},
    {u"slot.right", u"右", u"R"},
    {u"metric.deckWinRate", u"卡组胜率", u"Deck WR"},
    {u"metric.drawnWinRate", u"抽到胜率", u"Drawn WR"},
    {u"metric.playedWinRate", u"打出胜率", u"Played WR"},
    {u"metric.popularity", u"出现热度", u"Popularity"},
    {u"metric.avgCopies", u"套牌均拷", u"Avg copies"},
    {u"metric.classWinRate", u"职业胜率", u"Class WR"},
    {u"metric.pickRate", u"选择热度", u"Pick rate"},
    {u"metric.pct7Plus", u"7胜以上", u"7+ wins"},
    {u"metric.classRank", u"职业排名", u"Class rank"},
    {u"sync.msg.upToDate", u"配置已是最新 (%@…)", u"Config is up to date (%@…)"},
    {u"sync.msg.updated", u"已更新配置 (%@…)", u"Config updated (%@…)"},
    {u"sync.msg.offline", u"离线使用本地配置：%@", u"Offline, using local config: %@"},
    {u"sync.msg.failed", u"配置同步失败，将使用本地/内置数据：%@", u"Config sync failed; using local/bundled data: %@"},
    {u"sync.msg.busy", u"配置同步跳过：已有任务进行中", u"Config sync skipped: already in progress"},
    {u"sync.err.badURL", u"配置服务 URL 无效", u"Invalid config server URL"},
    {u"sync.err.http", u"配置服务 HTTP %d", u"Config server HTTP %d"},
    {u"sync.err.invalidManifest", u"远端 manifest 无效", u"Invalid remote manifest"},
    {u"sync.err.hash", u"配置包校验失败 (期望 %@… 实际 %@…)", u"Config package hash mismatch (expected %@… got %@…)"},
    {u"sync.err.extract", u"解压配置失败：%@", u"Failed to extract config: %@"},
};

using Table = QHash<QStringView, QStringView>;

const Table& table(AppLanguage language) {
    static const auto build = [](QStringView Text::* column) {
        Table built;
        built.reserve(std::size(texts));
        for (const Text& text : texts) {
            built.insert(text.key, text.*column);
        }
        return built;
    };
    static const Table chinese = build(&Text::chinese);
    static const Table english = build(&Text::english);
    return language == AppLanguage::zh ? chinese : english;
}

} // namespace

QString Argument::toString() const {
    if (const auto* text = std::get_if<QString>(&value)) {
        return *text;
    }
    return QString::number(std::get<std::int64_t>(value));
}

QString tr(QStringView key) {
    for (const AppLanguage language :
         {AppLanguage::resolvedPreference(), AppLanguage(AppLanguage::en), AppLanguage(AppLanguage::zh)}) {
        const Table& known = table(language);
        if (const auto found = known.constFind(key); found != known.constEnd()) {
            return found->toString();
        }
    }
    return key.toString();
}

QString tr(QStringView key, std::span<const Argument> arguments) {
    const QString format = tr(key);
    QString filled;
    auto next = arguments.begin();
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar following = i + 1 < format.size() ? format[i + 1] : QChar();
        if (format[i] != u'%') {
            filled += format[i];
        } else if (following == u'%') {
            filled += u'%';
            ++i;
        } else if ((following == u'@' || following == u'd') && next != arguments.end()) {
            filled += next->toString();
            ++next;
            ++i;
        } else {
            filled += u'%';
        }
    }
    return filled;
}

} // namespace pelloran::L10n
