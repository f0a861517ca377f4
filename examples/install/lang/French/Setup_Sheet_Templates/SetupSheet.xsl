<?xml version="1.0" encoding="UTF-8"?>
<!-- Une fiche simple pour l'opérateur de la machine. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="html" encoding="UTF-8"/>
  <xsl:template match="/SetupSheet">
    <html lang="fr">
      <head><title>Fiche de réglage</title></head>
      <body>
        <img src="../Setup_Sheet_Images/setup_sheet.svg" alt=""/>
        <h1>Fiche de réglage: <xsl:value-of select="@part"/></h1>
        <p>Matière: <xsl:value-of select="@material"/></p>
        <h2>Outils</h2>
        <table>
          <tr><th>Numéro</th><th>Outil</th></tr>
          <xsl:for-each select="Tool">
            <tr><td><xsl:value-of select="@number"/></td><td><xsl:value-of select="@name"/></td></tr>
          </xsl:for-each>
        </table>
      </body>
    </html>
  </xsl:template>
</xsl:stylesheet>
