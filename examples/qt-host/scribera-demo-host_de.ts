<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>DocumentDialog</name>
    <message>
        <source>The PDF document; it stays as it is</source>
        <translation>Das PDF-Dokument; es bleibt, wie es ist</translation>
    </message>
    <message>
        <source>From the left edge of the page</source>
        <translation>Vom linken Rand der Seite</translation>
    </message>
    <message>
        <source>From the upper edge of the page</source>
        <translation>Vom oberen Rand der Seite</translation>
    </message>
    <message>
        <source>Room for the signature</source>
        <translation>Platz für die Unterschrift</translation>
    </message>
    <message>
        <source>Why it is signed; may stay empty</source>
        <translation>Weshalb unterschrieben wird; darf leer bleiben</translation>
    </message>
    <message>
        <source>PKCS#12 file; without one, nothing shows later changes</source>
        <translation>PKCS#12-Datei; ohne sie zeigt nichts spätere Änderungen an</translation>
    </message>
    <message>
        <source>Opens the certificate&apos;s file</source>
        <translation>Öffnet die Datei des Zertifikats</translation>
    </message>
    <message>
        <source>The signed document</source>
        <translation>Das unterschriebene Dokument</translation>
    </message>
    <message>
        <source>&amp;Sign</source>
        <translation>&amp;Unterschreiben</translation>
    </message>
    <message>
        <source>Sign a document</source>
        <translation>Ein Dokument unterschreiben</translation>
    </message>
    <message>
        <source>Page of the signature</source>
        <translation>Seite der Unterschrift</translation>
    </message>
    <message>
        <source>Writes the signed document</source>
        <translation>Schreibt das unterschriebene Dokument</translation>
    </message>
    <message>
        <source>PDF documents (*.pdf)</source>
        <translation>PDF-Dokumente (*.pdf)</translation>
    </message>
    <message>
        <source>&amp;Document</source>
        <translation>&amp;Dokument</translation>
    </message>
    <message>
        <source>Document to sign</source>
        <translation>Zu unterschreibendes Dokument</translation>
    </message>
    <message>
        <source>Page, left, top, width</source>
        <translation>Seite, links, oben, Breite</translation>
    </message>
    <message>
        <source>&amp;Reason</source>
        <translation>&amp;Grund</translation>
    </message>
    <message>
        <source>&amp;Certificate</source>
        <translation>&amp;Zertifikat</translation>
    </message>
    <message>
        <source>Certificate to seal with</source>
        <translation>Zertifikat für das Siegel</translation>
    </message>
    <message>
        <source>PKCS#12 files (*.p12 *.pfx)</source>
        <translation>PKCS#12-Dateien (*.p12 *.pfx)</translation>
    </message>
    <message>
        <source>Pass&amp;word</source>
        <translation>&amp;Passwort</translation>
    </message>
    <message>
        <source>S&amp;igned document</source>
        <translation>Unterschriebenes D&amp;okument</translation>
    </message>
    <message>
        <source>Signed document</source>
        <translation>Unterschriebenes Dokument</translation>
    </message>
    <message>
        <source>scribera-sign is not installed.</source>
        <translation>scribera-sign ist nicht installiert.</translation>
    </message>
    <message>
        <source>Browse…</source>
        <translation>Durchsuchen …</translation>
    </message>
    <message>
        <source>-signed.pdf</source>
        <translation>-unterschrieben.pdf</translation>
    </message>
    <message>
        <source>Signing…</source>
        <translation>Wird unterschrieben …</translation>
    </message>
</context>
<context>
    <name>LiveMeter</name>
    <message>
        <source>Pressure of the pen, point by point while the person signs</source>
        <translation>Druck des Stifts, Punkt für Punkt, während die Person unterschreibt</translation>
    </message>
    <message>
        <source>Pen pressure</source>
        <translation>Stiftdruck</translation>
    </message>
    <message>
        <source>No pressure yet</source>
        <translation>Noch kein Druck</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Account agreement – Scribera demo</source>
        <translation>Kontovertrag – Scribera-Demo</translation>
    </message>
    <message>
        <source>The %1 went away</source>
        <translation>Das %1 ist nicht mehr da</translation>
    </message>
    <message>
        <source>Plug it in again. The signature that was being made is not kept.</source>
        <translation>Schließen Sie es wieder an. Die begonnene Unterschrift ist verloren.</translation>
    </message>
    <message>
        <source>the %1 went away</source>
        <translation>das %1 ist nicht mehr da</translation>
    </message>
    <message>
        <source>COUNTER 3</source>
        <translation>SCHALTER 3</translation>
    </message>
    <message>
        <source>Current account agreement</source>
        <translation>Girokontovertrag</translation>
    </message>
    <message>
        <source>Account holder</source>
        <translation>Kontoinhaberin</translation>
    </message>
    <message>
        <source>Ada Winterfeld</source>
        <translation>Ada Winterfeld</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <source>4402 1187 2065</source>
        <translation>4402 1187 2065</translation>
    </message>
    <message>
        <source>Overdraft</source>
        <translation>Dispokredit</translation>
    </message>
    <message>
        <source>up to 1,500.00</source>
        <translation>bis 1.500,00</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>d MMMM yyyy</source>
        <comment>date, in Qt&apos;s letters</comment>
        <translation>d. MMMM yyyy</translation>
    </message>
    <message>
        <source>The account is kept free of charge. Either side may end the agreement with a notice of one month. By signing, the account holder confirms to have received the terms.</source>
        <translation>Das Konto wird kostenlos geführt. Beide Seiten können den Vertrag mit einer Frist von einem Monat kündigen. Mit der Unterschrift bestätigt die Kontoinhaberin, die Bedingungen erhalten zu haben.</translation>
    </message>
    <message>
        <source>Signature of the account holder</source>
        <translation>Unterschrift der Kontoinhaberin</translation>
    </message>
    <message>
        <source>Clear and &amp;retry</source>
        <translation>Löschen und ne&amp;u</translation>
    </message>
    <message>
        <source>Takes the signature off the form and the pad</source>
        <translation>Löscht die Unterschrift vom Formular und vom Pad</translation>
    </message>
    <message>
        <source>&amp;Confirm</source>
        <translation>&amp;Bestätigen</translation>
    </message>
    <message>
        <source>Accepts the signature, as the pad&apos;s confirm key does</source>
        <translation>Nimmt die Unterschrift an, wie die Bestätigungstaste des Pads</translation>
    </message>
    <message>
        <source>Pen</source>
        <translation>Stift</translation>
    </message>
    <message>
        <source>Width of the pen, 1 to 10</source>
        <translation>Strichbreite, 1 bis 10</translation>
    </message>
    <message>
        <source>Follows the &amp;pressure</source>
        <translation>Folgt dem D&amp;ruck</translation>
    </message>
    <message>
        <source>Harder strokes are drawn wider</source>
        <translation>Festere Striche werden breiter</translation>
    </message>
    <message>
        <source>Black</source>
        <translation>Schwarz</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>&amp;Other…</source>
        <translation>&amp;Andere …</translation>
    </message>
    <message>
        <source>Any other colour</source>
        <translation>Jede andere Farbe</translation>
    </message>
    <message>
        <source>&amp;Width</source>
        <translation>Br&amp;eite</translation>
    </message>
    <message>
        <source>Colour</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>Pad</source>
        <translation>Pad</translation>
    </message>
    <message>
        <source>The model on the counter</source>
        <translation>Das Modell am Schalter</translation>
    </message>
    <message>
        <source>&amp;Model</source>
        <translation>&amp;Modell</translation>
    </message>
    <message>
        <source>Live</source>
        <translation>Live</translation>
    </message>
    <message>
        <source>Fingerprint</source>
        <translation>Fingerabdruck</translation>
    </message>
    <message>
        <source>In the signature field</source>
        <translation>Im Unterschriftsfeld</translation>
    </message>
    <message>
        <source>Here, small</source>
        <translation>Hier, klein</translation>
    </message>
    <message>
        <source>Where the next fingerprint is shown</source>
        <translation>Wo der nächste Fingerabdruck gezeigt wird</translation>
    </message>
    <message>
        <source>Place of the fingerprint</source>
        <translation>Ort des Fingerabdrucks</translation>
    </message>
    <message>
        <source>Export &amp;fingerprint…</source>
        <translation>&amp;Fingerabdruck exportieren …</translation>
    </message>
    <message>
        <source>Saves the fingerprint alone as PNG</source>
        <translation>Speichert nur den Fingerabdruck als PNG</translation>
    </message>
    <message>
        <source>Repl&amp;ay…</source>
        <translation>Abs&amp;pielen …</translation>
    </message>
    <message>
        <source>Shows how the signature was written; exports the ink</source>
        <translation>Zeigt, wie die Unterschrift geschrieben wurde; exportiert die Tinte</translation>
    </message>
    <message>
        <source>&amp;Load ink…</source>
        <translation>Tinte &amp;laden …</translation>
    </message>
    <message>
        <source>Plays an ink packet stream from a file</source>
        <translation>Spielt einen Tintenstrom aus einer Datei ab</translation>
    </message>
    <message>
        <source>&amp;Save or copy…</source>
        <translation>&amp;Speichern oder kopieren …</translation>
    </message>
    <message>
        <source>Preview, then BMP, JPEG, PNG, PDF, SVG or Base64</source>
        <translation>Vorschau, dann BMP, JPEG, PNG, PDF, SVG oder Base64</translation>
    </message>
    <message>
        <source>Sign a &amp;document…</source>
        <translation>&amp;Dokument unterschreiben …</translation>
    </message>
    <message>
        <source>Puts the signature into a PDF document, and seals it with a certificate</source>
        <translation>Setzt die Unterschrift in ein PDF-Dokument und versiegelt es mit einem Zertifikat</translation>
    </message>
    <message>
        <source>The %1 does not answer</source>
        <translation>Das %1 antwortet nicht</translation>
    </message>
    <message>
        <source>Plug the pad in and wait until it lights up, or choose the model that is on the counter. Nothing is lost.</source>
        <translation>Schließen Sie das Pad an und warten Sie, bis es leuchtet, oder wählen Sie das Modell, das am Schalter steht. Es ist nichts verloren.</translation>
    </message>
    <message>
        <source>no pad: %1</source>
        <translation>kein Pad: %1</translation>
    </message>
    <message>
        <source>The pad&apos;s driver is missing</source>
        <translation>Der Treiber des Pads fehlt</translation>
    </message>
    <message>
        <source>Put libscriberadrv.so into the folder %1, or start this program in the folder that has it. Then try again.</source>
        <translation>Legen Sie libscriberadrv.so in den Ordner %1, oder starten Sie dieses Programm in dem Ordner, der die Datei enthält. Versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>No pad</source>
        <translation>Kein Pad</translation>
    </message>
    <message>
        <source>Waiting for the signature</source>
        <translation>Warten auf die Unterschrift</translation>
    </message>
    <message>
        <source>Signing</source>
        <translation>Es wird unterschrieben</translation>
    </message>
    <message>
        <source>Not confirmed – please confirm again</source>
        <translation>Nicht bestätigt – bitte erneut bestätigen</translation>
    </message>
    <message>
        <source>Confirmed at %1</source>
        <translation>Bestätigt um %1</translation>
    </message>
    <message>
        <source>Cancelled – please sign again</source>
        <translation>Abgebrochen – bitte erneut unterschreiben</translation>
    </message>
    <message>
        <source>1 point</source>
        <translation>1 Punkt</translation>
    </message>
    <message numerus="yes">
        <source>%n points</source>
        <translation>
            <numerusform>%n Punkt</numerusform>
            <numerusform>%n Punkte</numerusform>
        </translation>
    </message>
    <message>
        <source>The pad did not take the pen settings.</source>
        <translation>Das Pad hat die Stifteinstellungen nicht angenommen.</translation>
    </message>
    <message>
        <source>Ink</source>
        <translation>Tinte</translation>
    </message>
    <message>
        <source>White ink would not be seen on the paper.</source>
        <translation>Weiße Tinte wäre auf dem Papier nicht zu sehen.</translation>
    </message>
    <message>
        <source>Export fingerprint</source>
        <translation>Fingerabdruck exportieren</translation>
    </message>
    <message>
        <source>PNG (*.png)</source>
        <translation>PNG (*.png)</translation>
    </message>
    <message>
        <source>%1 cannot be written.</source>
        <translation>%1 lässt sich nicht schreiben.</translation>
    </message>
    <message>
        <source>Load ink</source>
        <translation>Tinte laden</translation>
    </message>
    <message>
        <source>Ink (*.ink);;All files (*)</source>
        <translation>Tinte (*.ink);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>%1 holds no ink packet stream.</source>
        <translation>%1 enthält keinen Tintenstrom.</translation>
    </message>
</context>
<context>
    <name>PreviewDialog</name>
    <message>
        <source>Cut to the &amp;ink</source>
        <translation>Auf die &amp;Tinte zuschneiden</translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation>&amp;Speichern …</translation>
    </message>
    <message>
        <source>Copy as &amp;Base64</source>
        <translation>Als &amp;Base64 kopieren</translation>
    </message>
    <message>
        <source>Save the signature</source>
        <translation>Die Unterschrift speichern</translation>
    </message>
    <message>
        <source>PNG, transparent paper</source>
        <translation>PNG, durchsichtiges Papier</translation>
    </message>
    <message>
        <source>JPEG</source>
        <translation>JPEG</translation>
    </message>
    <message>
        <source>BMP</source>
        <translation>BMP</translation>
    </message>
    <message>
        <source>PDF, one A4 page</source>
        <translation>PDF, eine A4-Seite</translation>
    </message>
    <message>
        <source>SVG, vector drawing</source>
        <translation>SVG, Vektorzeichnung</translation>
    </message>
    <message>
        <source>Kind of file</source>
        <translation>Art der Datei</translation>
    </message>
    <message>
        <source>150 dpi</source>
        <translation>150 dpi</translation>
    </message>
    <message>
        <source>300 dpi</source>
        <translation>300 dpi</translation>
    </message>
    <message>
        <source>Dots per inch: how large the picture is on paper</source>
        <translation>Punkte je Zoll: wie groß das Bild auf Papier ist</translation>
    </message>
    <message>
        <source>Leaves the empty paper around the signature out</source>
        <translation>Lässt das leere Papier um die Unterschrift herum weg</translation>
    </message>
    <message>
        <source>Saves what the preview shows</source>
        <translation>Speichert, was die Vorschau zeigt</translation>
    </message>
    <message>
        <source>Puts the picture on the clipboard, as text</source>
        <translation>Legt das Bild als Text in die Zwischenablage</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Resolution</source>
        <translation>&amp;Auflösung</translation>
    </message>
    <message>
        <source>%1 × %2 pixels, %3 × %4 mm on paper, %5 kB</source>
        <translation>%1 × %2 Pixel, %3 × %4 mm auf Papier, %5 kB</translation>
    </message>
    <message>
        <source>%1 (*.%2)</source>
        <translation>%1 (*.%2)</translation>
    </message>
    <message>
        <source>%1 cannot be written.</source>
        <translation>%1 lässt sich nicht schreiben.</translation>
    </message>
</context>
<context>
    <name>Program</name>
    <message>
        <source>A bank&apos;s counter with a signature pad.</source>
        <translation>Ein Bankschalter mit einem Unterschriftenpad.</translation>
    </message>
    <message>
        <source>The pad: %1.</source>
        <translation>Das Pad: %1.</translation>
    </message>
    <message>
        <source>On confirm, save the signature in every form and end.</source>
        <translation>Nach der Bestätigung die Unterschrift in jeder Form speichern und das Programm beenden.</translation>
    </message>
    <message>
        <source>Save a picture of the window and end.</source>
        <translation>Ein Bild des Fensters speichern und das Programm beenden.</translation>
    </message>
    <message>
        <source>When to take it: &apos;confirm&apos;, or seconds (default 1).</source>
        <translation>Wann: „confirm“ oder Sekunden (Vorgabe 1).</translation>
    </message>
    <message>
        <source>unexpected: %1</source>
        <translation>unerwartet: %1</translation>
    </message>
    <message>
        <source>--model %1 is none of %2</source>
        <translation>--model %1 ist keines von %2</translation>
    </message>
    <message>
        <source>--after %1 is neither &apos;confirm&apos; nor 0 to 3600 seconds</source>
        <translation>--after %1 ist weder „confirm“ noch 0 bis 3600 Sekunden</translation>
    </message>
    <message>
        <source>cannot make the folder %1</source>
        <translation>der Ordner %1 lässt sich nicht anlegen</translation>
    </message>
    <message>
        <source>model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>file</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>moment</source>
        <translation>Zeitpunkt</translation>
    </message>
</context>
<context>
    <name>ReplayView</name>
    <message>
        <source>&amp;Play</source>
        <translation>&amp;Abspielen</translation>
    </message>
    <message>
        <source>Replay of the ink</source>
        <translation>Wiedergabe der Tinte</translation>
    </message>
    <message>
        <source>Plays the signature at the speed at which it was written</source>
        <translation>Spielt die Unterschrift so schnell ab, wie sie geschrieben wurde</translation>
    </message>
    <message>
        <source>Moment of the signature</source>
        <translation>Zeitpunkt der Unterschrift</translation>
    </message>
    <message>
        <source>Moment</source>
        <translation>Zeitpunkt</translation>
    </message>
    <message>
        <source>%L1 of %L2 s</source>
        <translation>%L1 von %L2 s</translation>
    </message>
    <message>
        <source>&amp;Export…</source>
        <translation>&amp;Exportieren …</translation>
    </message>
    <message>
        <source>Saves this ink packet stream as a file</source>
        <translation>Speichert diesen Tintenstrom als Datei</translation>
    </message>
    <message>
        <source>&amp;Pause</source>
        <translation>&amp;Pause</translation>
    </message>
    <message>
        <source>Export ink</source>
        <translation>Tinte exportieren</translation>
    </message>
    <message>
        <source>Ink (*.ink)</source>
        <translation>Tinte (*.ink)</translation>
    </message>
    <message>
        <source>%1 cannot be written.</source>
        <translation>%1 lässt sich nicht schreiben.</translation>
    </message>
</context>
<context>
    <name>Script</name>
    <message>
        <source>cancelled at the pad</source>
        <translation>am Pad abgebrochen</translation>
    </message>
    <message>
        <source>cannot save %1</source>
        <translation>%1 lässt sich nicht speichern</translation>
    </message>
</context>
<context>
    <name>SignaturePanel</name>
    <message>
        <source>✕  Please sign here</source>
        <translation>✕  Bitte hier unterschreiben</translation>
    </message>
    <message>
        <source>&amp;Try again</source>
        <translation>&amp;Noch einmal versuchen</translation>
    </message>
    <message>
        <source>Looks for the pad once more</source>
        <translation>Sucht noch einmal nach dem Pad</translation>
    </message>
</context>
</TS>
