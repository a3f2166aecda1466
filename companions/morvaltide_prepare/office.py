"""Turns office documents into PDF, by LibreOffice."""

import os

from . import tools
from .failure import Failure

# No macro is run, nothing is fetched from elsewhere, no link is followed.
_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<oor:items xmlns:oor="http://openoffice.org/2001/registry">
<item oor:path="/org.openoffice.Office.Common/Security/Scripting"><prop oor:name="DisableMacrosExecution" oor:op="fuse"><value>true</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Security/Scripting"><prop oor:name="MacroSecurityLevel" oor:op="fuse"><value>3</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Security/Scripting"><prop oor:name="BlockUntrustedRefererLinks" oor:op="fuse"><value>true</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Security/Scripting"><prop oor:name="DisableActiveContent" oor:op="fuse"><value>true</value></prop></item>
<item oor:path="/org.openoffice.Office.Writer/Content/Update"><prop oor:name="Link" oor:op="fuse"><value>0</value></prop></item>
<item oor:path="/org.openoffice.Office.Calc/Content/Update"><prop oor:name="Link" oor:op="fuse"><value>1</value></prop></item>
</oor:items>
"""


def prepare(folder: str) -> str:
    """Makes a PDF document of the office document "in" in `folder`; gives its path."""
    user = os.path.join(folder, "libreoffice", "user")
    os.makedirs(user)
    with open(os.path.join(user, "registrymodifications.xcu"), "w", encoding="utf-8") as file:
        file.write(_SETTINGS)
    path = tools.find(("libreoffice", "soffice"), "libreoffice")
    status, said = tools.run(
        [path, "--headless", "--norestore", "--nolockcheck", "--nodefault",
         f"-env:UserInstallation=file://{os.path.dirname(user)}",
         "--convert-to", "pdf", "--outdir", "office", "in"], folder)
    result = os.path.join(folder, "office", "in.pdf")
    if status != 0:
        raise tools.failed("soffice", status, said)
    if not os.path.exists(result):
        raise Failure("LibreOffice cannot read it")
    return result
