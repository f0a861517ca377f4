<?xml version="1.0" encoding="UTF-8"?>
<!-- Ein einfaches Blatt für den Bediener der Maschine. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="html" encoding="UTF-8"/>
  <xsl:template match="/SetupSheet">
    <html lang="de">
      <head><title>Einrichteblatt</title></head>
      <body>
        <img src="../Setup_Sheet_Images/setup_sheet.svg" alt=""/>
        <h1>Einrichteblatt: <xsl:value-of select="@part"/></h1>
        <p>Werkstoff: <xsl:value-of select="@material"/></p>
        <h2>Werkzeuge</h2>
        <table>
          <tr><th>Nummer</th><th>Werkzeug</th></tr>
          <xsl:for-each select="Tool">
            <tr><td><xsl:value-of select="@number"/></td><td><xsl:value-of select="@name"/></td></tr>
          </xsl:for-each>
        </table>
      </body>
    </html>
  </xsl:template>
</xsl:stylesheet>
