#include "sites/site_store.h"

#include <cstring>

#include "host/services.h"
#include "sites/book_test.h"

using namespace quennet;
using testing::ElementsAre;

namespace {

constexpr int typeList = 14301;

class FirewallTest : public AnyHostBookTest {
  protected:
    /// Clicks the box until it is set, and waits for what opens.
    OpenDialog OpenFirewall(const OpenDialog& dialog) {
        dialog.SetChecked(firewallBox, false);
        dialog.Press(firewallBox);
        return Find(firewallLabel);
    }
    void CloseFirewall(const OpenDialog& firewall, int button) {
        firewall.Press(button);
        Find(directoryField);
    }
    std::string Shown(const OpenDialog& firewall) {
        return firewall.Field(hostField) + "|" + firewall.Field(userField) + "|" +
               firewall.Field(passwordField) + "|" + std::to_string(firewall.Selected(typeList));
    }
};

TEST_P(FirewallTest, ShowsWhatTheBookHoldsAndStoresItAtOnce) {
    Start(
        "[FTP]\nM1=bare\nH1=127.0.0.1:1\nM2=full\nH2=127.0.0.1:1\nG2=gate:1080\nN2=guard\n"
        "P2=8497BBEB1234CADD\nT2=5\nM3=odd\nH3=127.0.0.1:1\nP3=nonsense\nT3=9\n");
    const OpenDialog dialog = Open();
    OpenDialog firewall = OpenFirewall(dialog);
    EXPECT_EQ(firewall.Caption(), " Firewall");
    EXPECT_EQ(GetDlgCtrlID(GetDlgItem(firewall.Window(), okButton)), okButton);
    EXPECT_THAT(firewall.Entries(typeList),
                ElementsAre("USER User@Host / Password", "Login / USER User@Host", "SITE Host",
                            "OPEN Host", "USER User@FirewallUser@Host / Pass@FirewallPass",
                            "USER FirewallUser@Host / FirewallPass"));
    EXPECT_EQ(Shown(firewall), "|||0");
    CloseFirewall(firewall, okButton);

    dialog.Choose(siteList, 1);
    EXPECT_FALSE(dialog.IsChecked(firewallBox));
    firewall = OpenFirewall(dialog);
    EXPECT_EQ(Shown(firewall), "gate:1080|guard|secret|4");
    CloseFirewall(firewall, okButton);

    dialog.Choose(siteList, 2);
    firewall = OpenFirewall(dialog);
    EXPECT_EQ(Shown(firewall), "|||0");
    firewall.Type(userField, std::string(100, 'u'));
    EXPECT_EQ(firewall.Field(userField).size(), 80u);
    firewall.SetField(hostField, std::string(300, 'g'));
    firewall.Type(passwordField, std::string(100, 'p'));
    firewall.Choose(typeList, 3);
    CloseFirewall(firewall, cancelButton);
    firewall = OpenFirewall(dialog);
    EXPECT_EQ(Shown(firewall), "|||0");
    firewall.SetField(hostField, std::string(300, 'g'));
    firewall.Type(passwordField, "abcd");
    firewall.Choose(typeList, 3);
    CloseFirewall(firewall, okButton);
    firewall = OpenFirewall(dialog);
    EXPECT_EQ(Shown(firewall), std::string(258, 'g') + "||abcd|3");
    CloseFirewall(firewall, okButton);
    // What the dialog filled stays, whatever site is connected to.
    dialog.Choose(siteList, 1);
    Close(dialog, okButton);
    EXPECT_EQ(Site().firewallHost, std::string(79, 'g'));
    EXPECT_STREQ(Site().firewallPassword, "abcd");
    EXPECT_EQ(u32{Site().firewallType}, 4u);
    EXPECT_EQ(Book(),
              "M1=bare\nH1=127.0.0.1:1\nO1=4\nT1=1\nM2=full\nH2=127.0.0.1:1\nO2=4\n"
              "G2=gate:1080\nN2=guard\nP2=8497BBEB1234CADD\nT2=5\n"
              "M3=odd\nH3=127.0.0.1:1\nO3=4\nG3=" +
                  std::string(258, 'g') + "\nP3=7697B8D9\nT3=4\n");
}

TEST_P(FirewallTest, ASiteWithTheBitTakesTheBooksFirewallAndKeepsItWithoutTheBit) {
    const std::string keys = "G1=" + std::string(100, 'g') + "\nN1=guard\nP1=7697B8D9\nT1=3\n";
    Start("[FTP]\nM1=site\nH1=127.0.0.1:1\nO1=4\n" + keys);
    OpenDialog dialog = Open();  // opens no firewall dialog
    OpenFirewall(dialog).Press(cancelButton);
    Find(directoryField);
    Close(dialog, okButton);
    EXPECT_EQ(Site().firewallHost, std::string(80, 'g'));
    EXPECT_STREQ(Site().firewallUser, "guard");
    EXPECT_STREQ(Site().firewallPassword, "abcd");
    EXPECT_EQ(u32{Site().firewallType}, 3u);
    Disconnect();

    dialog = Open();
    dialog.SetChecked(firewallBox, false);
    Close(dialog, okButton);
    EXPECT_EQ(u32{Site().firewallType}, 0u);
    EXPECT_STREQ(Site().firewallHost, "");
    EXPECT_EQ(Book(), "M1=site\nH1=127.0.0.1:1\nO1=0\n" + keys);
}

ON_ANY_HOST(FirewallTest);

}  // namespace
