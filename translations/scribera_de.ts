<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>PenDriver</name>
    <message>
        <source>install the udev rule 70-scribera-pen.rules and plug the device in again, or sign in at the machine itself</source>
        <translation>installieren Sie die udev-Regel 70-scribera-pen.rules und stecken Sie das Gerät neu ein, oder melden Sie sich direkt am Rechner an</translation>
    </message>
    <message>
        <source>pen</source>
        <translation>Stift</translation>
    </message>
    <message>
        <source>touch screen</source>
        <translation>Touchscreen</translation>
    </message>
    <message>
        <source>touchpad</source>
        <translation>Touchpad</translation>
    </message>
    <message>
        <source>nothing to sign on</source>
        <translation>nichts zum Unterschreiben</translation>
    </message>
    <message>
        <source>tells no position</source>
        <translation>meldet keine Position</translation>
    </message>
    <message>
        <source>has a pen&apos;s buttons, but never tells that the tip touches</source>
        <translation>hat die Tasten eines Stifts, meldet aber nie, dass die Spitze aufsetzt</translation>
    </message>
    <message>
        <source>is not touched</source>
        <translation>wird nicht berührt</translation>
    </message>
    <message>
        <source>udev cannot be reached</source>
        <translation>udev ist nicht erreichbar</translation>
    </message>
    <message>
        <source>is not meant</source>
        <translation>ist nicht gemeint</translation>
    </message>
    <message>
        <source>there are no input devices</source>
        <translation>es gibt keine Eingabegeräte</translation>
    </message>
    <message>
        <source>no pen and no touch screen</source>
        <translation>kein Stift und kein Touchscreen</translation>
    </message>
    <message>
        <source>SCRIBERA_PEN_AREA cannot be used: the device does not tell its size</source>
        <translation>SCRIBERA_PEN_AREA ist nicht verwendbar: Das Gerät meldet seine Größe nicht</translation>
    </message>
    <message>
        <source>left,top,width,height in millimetres, such as 10,10,120.5,80</source>
        <translation>links,oben,Breite,Höhe in Millimetern, etwa 10,10,120.5,80</translation>
    </message>
    <message>
        <source>the name of a key or button, such as BTN_STYLUS or KEY_ENTER, with @ and a part of a device&apos;s name behind it or not, or none</source>
        <translation>der Name einer Taste, etwa BTN_STYLUS oder KEY_ENTER, wahlweise mit @ und einem Teil des Gerätenamens dahinter, oder none</translation>
    </message>
    <message>
        <source>0 or 1</source>
        <translation>0 oder 1</translation>
    </message>
    <message>
        <source>keep or stretch</source>
        <translation>keep oder stretch</translation>
    </message>
    <message>
        <source>0, 90, 180 or 270</source>
        <translation>0, 90, 180 oder 270</translation>
    </message>
    <message>
        <source>no permission to read it: %1</source>
        <translation>keine Berechtigung, es zu lesen: %1</translation>
    </message>
    <message>
        <source>cannot be opened: %1</source>
        <translation>lässt sich nicht öffnen: %1</translation>
    </message>
    <message>
        <source>no input device: %1</source>
        <translation>kein Eingabegerät: %1</translation>
    </message>
    <message>
        <source>has no range on its %1 axis</source>
        <translation>hat keinen Wertebereich auf der %1-Achse</translation>
    </message>
    <message>
        <source>is a %1, which SCRIBERA_PEN_DEVICE has to name</source>
        <translation>ist vom Typ %1 und muss in SCRIBERA_PEN_DEVICE genannt sein</translation>
    </message>
    <message>
        <source>no device to sign on is &quot;%1&quot;</source>
        <translation>kein Gerät zum Unterschreiben heißt „%1“</translation>
    </message>
    <message>
        <source>SCRIBERA_PEN_AREA does not lie on the device, which has %1 x %2 mm</source>
        <translation>SCRIBERA_PEN_AREA liegt nicht auf dem Gerät, das %1 x %2 mm misst</translation>
    </message>
    <message>
        <source>%1 is &quot;%2&quot;; it has to be %3</source>
        <translation>%1 ist „%2“; erwartet wird %3</translation>
    </message>
</context>
<context>
    <name>QCommandLineParser</name>
    <message>
        <source>Usage: %1</source>
        <translation>Aufruf: %1</translation>
    </message>
    <message>
        <source>[options]</source>
        <translation>[Optionen]</translation>
    </message>
    <message>
        <source>Options:</source>
        <translation>Optionen:</translation>
    </message>
    <message>
        <source>Arguments:</source>
        <translation>Argumente:</translation>
    </message>
    <message>
        <source>Unknown option &apos;%1&apos;.</source>
        <translation>Unbekannte Option „%1“.</translation>
    </message>
    <message>
        <source>Unknown options: %1.</source>
        <translation>Unbekannte Optionen: %1.</translation>
    </message>
    <message>
        <source>Missing value after &apos;%1&apos;.</source>
        <translation>Hinter „%1“ fehlt ein Wert.</translation>
    </message>
    <message>
        <source>Unexpected value after &apos;%1&apos;.</source>
        <translation>Unerwarteter Wert hinter „%1“.</translation>
    </message>
</context>
<context>
    <name>QGuiApplication</name>
    <message>
        <source>QT_LAYOUT_DIRECTION</source>
        <translation>LTR</translation>
    </message>
</context>
<context>
    <name>QPlatformTheme</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>&amp;Yes</source>
        <translation>&amp;Ja</translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation>&amp;Nein</translation>
    </message>
</context>
<context>
    <name>Sign</name>
    <message>
        <source>the signature would lie beyond the edge of the page, which is %1 by %2 points</source>
        <translation>die Unterschrift läge außerhalb der Seite, die %1 mal %2 Punkt misst</translation>
    </message>
    <message>
        <source>there is no room for a signature after the text</source>
        <translation>hinter dem Text ist kein Platz für eine Unterschrift</translation>
    </message>
    <message>
        <source>the line below the signature has characters that its font lacks: %1</source>
        <translation>die Zeile unter der Unterschrift hat Zeichen, die ihrer Schrift fehlen: %1</translation>
    </message>
    <message>
        <source>there is no room for the lines below the signature</source>
        <translation>für die Zeilen unter der Unterschrift ist kein Platz</translation>
    </message>
    <message>
        <source>the ink has no strokes</source>
        <translation>die Tinte hat keine Striche</translation>
    </message>
    <message>
        <source>the pages have too much on them to be searched</source>
        <translation>auf den Seiten steht zu viel, um sie zu durchsuchen</translation>
    </message>
    <message>
        <source>the document is damaged: what is on its pages cannot be read</source>
        <translation>das Dokument ist beschädigt: Was auf seinen Seiten steht, lässt sich nicht lesen</translation>
    </message>
    <message>
        <source>more than 2 GB cannot be read at once</source>
        <translation>mehr als 2 GB lassen sich nicht auf einmal lesen</translation>
    </message>
    <message>
        <source>CMS cannot be written: %1</source>
        <translation>die CMS-Daten lassen sich nicht schreiben: %1</translation>
    </message>
    <message>
        <source>no reason given</source>
        <translation>kein Grund angegeben</translation>
    </message>
    <message>
        <source>its RSA key has only %1 bits, fewer than %2</source>
        <translation>sein RSA-Schlüssel hat nur %1 Bits, weniger als %2</translation>
    </message>
    <message>
        <source>its EC key has only %1 bits, fewer than %2</source>
        <translation>sein EC-Schlüssel hat nur %1 Bits, weniger als %2</translation>
    </message>
    <message>
        <source>its key is neither RSA nor EC</source>
        <translation>sein Schlüssel ist weder RSA noch EC</translation>
    </message>
    <message>
        <source>a digest cannot be made: %1</source>
        <translation>ein Hashwert lässt sich nicht berechnen: %1</translation>
    </message>
    <message>
        <source>it stands for more than %1 bytes</source>
        <translation>sie steht für mehr als %1 Bytes</translation>
    </message>
    <message>
        <source>the document is damaged: %1</source>
        <translation>das Dokument ist beschädigt: %1</translation>
    </message>
    <message>
        <source>the document is certified: it must not be changed any more</source>
        <translation>das Dokument ist zertifiziert: Es darf nicht mehr geändert werden</translation>
    </message>
    <message>
        <source>the document is certified: fields that it has may be filled and signed, nothing may be added</source>
        <translation>das Dokument ist zertifiziert: Vorhandene Felder dürfen ausgefüllt und unterschrieben werden, hinzukommen darf nichts</translation>
    </message>
    <message>
        <source>it is no PDF document</source>
        <translation>es ist kein PDF-Dokument</translation>
    </message>
    <message>
        <source>something stands before the PDF document</source>
        <translation>vor dem PDF-Dokument steht noch etwas</translation>
    </message>
    <message>
        <source>the document needs a password</source>
        <translation>das Dokument braucht ein Passwort</translation>
    </message>
    <message>
        <source>the password does not open the document</source>
        <translation>das Passwort öffnet das Dokument nicht</translation>
    </message>
    <message>
        <source>its catalog is no object of its own</source>
        <translation>sein Katalog ist kein eigenes Objekt</translation>
    </message>
    <message>
        <source>it has no catalog</source>
        <translation>es hat keinen Katalog</translation>
    </message>
    <message>
        <source>its page tree is wrong</source>
        <translation>sein Seitenbaum ist falsch</translation>
    </message>
    <message>
        <source>it has no pages</source>
        <translation>es hat keine Seiten</translation>
    </message>
    <message>
        <source>there is no page %1: the document has %2</source>
        <translation>es gibt keine Seite %1: Das Dokument hat %2</translation>
    </message>
    <message>
        <source>its form fields are wrong</source>
        <translation>seine Formularfelder sind falsch</translation>
    </message>
    <message>
        <source>there is no signature field %1</source>
        <translation>es gibt kein Unterschriftsfeld %1</translation>
    </message>
    <message>
        <source>the field %1 is signed</source>
        <translation>das Feld %1 ist schon unterschrieben</translation>
    </message>
    <message>
        <source>the field %1 has no room on a page</source>
        <translation>das Feld %1 hat auf keiner Seite Platz</translation>
    </message>
    <message>
        <source>the field %1 is hidden</source>
        <translation>das Feld %1 ist verborgen</translation>
    </message>
    <message>
        <source>the field %1 is read-only</source>
        <translation>das Feld %1 ist schreibgeschützt</translation>
    </message>
    <message>
        <source>the field %1 demands a signature of a certain kind, which cannot be promised</source>
        <translation>das Feld %1 verlangt eine Unterschrift bestimmter Art, die sich nicht zusagen lässt</translation>
    </message>
    <message>
        <source>the document is an XFA form, which cannot be signed here</source>
        <translation>das Dokument ist ein XFA-Formular; solche lassen sich hier nicht unterschreiben</translation>
    </message>
    <message>
        <source>a signature of the document locks the field %1</source>
        <translation>eine Signatur des Dokuments sperrt das Feld %1</translation>
    </message>
    <message>
        <source>the owner of the document does not allow this; the owner&apos;s password would</source>
        <translation>der Eigentümer des Dokuments erlaubt das nicht; mit seinem Passwort ginge es</translation>
    </message>
    <message>
        <source>the addition to the document cannot be encrypted</source>
        <translation>der Zusatz zum Dokument lässt sich nicht verschlüsseln</translation>
    </message>
    <message>
        <source>the document is encrypted in a way that is not known</source>
        <translation>das Dokument ist auf unbekannte Art verschlüsselt</translation>
    </message>
    <message>
        <source>without a certificate there is no seal to fill the field %1 with</source>
        <translation>ohne Zertifikat gibt es kein Siegel, mit dem sich das Feld %1 füllen ließe</translation>
    </message>
    <message>
        <source>the units of the page are too large for a signature of this size</source>
        <translation>die Einheiten der Seite sind zu groß für eine Unterschrift dieser Größe</translation>
    </message>
    <message>
        <source>the document cannot be continued: it contradicts itself</source>
        <translation>das Dokument lässt sich nicht fortsetzen: Es widerspricht sich</translation>
    </message>
    <message>
        <source>the signature cannot be found again: the document contradicts itself</source>
        <translation>die Unterschrift ist nicht wiederzufinden: Das Dokument widerspricht sich</translation>
    </message>
    <message>
        <source>the field %1 is not drawn as it is filled, which the form leaves to readers</source>
        <translation>das Feld %1 ist nicht so gezeichnet, wie es ausgefüllt ist; das Formular überlässt das dem Anzeigeprogramm</translation>
    </message>
    <message>
        <source>on no page</source>
        <translation>auf keiner Seite</translation>
    </message>
    <message>
        <source>page %1 at %2,%3, %4 by %5 points</source>
        <translation>Seite %1 bei %2,%3, %4 mal %5 Punkt</translation>
    </message>
    <message>
        <source>%1, signed</source>
        <translation>%1, unterschrieben</translation>
    </message>
    <message>
        <source>%1, not signed</source>
        <translation>%1, nicht unterschrieben</translation>
    </message>
    <message>
        <source>the form was changed</source>
        <translation>wurde das Formular geändert</translation>
    </message>
    <message>
        <source>pages were added or removed</source>
        <translation>wurden Seiten hinzugefügt oder entfernt</translation>
    </message>
    <message>
        <source>the field %1 was changed</source>
        <translation>wurde das Feld %1 geändert</translation>
    </message>
    <message>
        <source>what holds for all of the document was changed</source>
        <translation>wurde geändert, was für das ganze Dokument gilt</translation>
    </message>
    <message>
        <source>fields were removed</source>
        <translation>wurden Felder entfernt</translation>
    </message>
    <message>
        <source>fields were added</source>
        <translation>wurden Felder hinzugefügt</translation>
    </message>
    <message>
        <source>page %1 was changed</source>
        <translation>wurde Seite %1 geändert</translation>
    </message>
    <message>
        <source>what lies on page %1 was changed</source>
        <translation>wurde geändert, was auf Seite %1 liegt</translation>
    </message>
    <message>
        <source>the document was changed</source>
        <translation>wurde das Dokument geändert</translation>
    </message>
    <message>
        <source>the page has too much text on it to be searched</source>
        <translation>auf der Seite steht zu viel Text, um sie zu durchsuchen</translation>
    </message>
    <message>
        <source>an empty text is everywhere</source>
        <translation>ein leerer Text ist überall</translation>
    </message>
    <message>
        <source>a signature cannot stand after the text &apos;%1&apos; as it is drawn</source>
        <translation>hinter dem Text „%1“, so wie er gezeichnet ist, kann keine Unterschrift stehen</translation>
    </message>
    <message>
        <source>the text &apos;%1&apos; is not found</source>
        <translation>der Text „%1“ kommt nicht vor</translation>
    </message>
    <message>
        <source>the text &apos;%1&apos; is not found; not all that the document shows can be read as text</source>
        <translation>der Text „%1“ kommt nicht vor; nicht alles, was das Dokument zeigt, ist als Text lesbar</translation>
    </message>
    <message>
        <source>the text &apos;%1&apos; is there %2 times; use a longer one, or --at</source>
        <translation>der Text „%1“ kommt %2-mal vor; nehmen Sie einen längeren oder --at</translation>
    </message>
    <message>
        <source>the document is damaged: it does not tell where its cross-reference is</source>
        <translation>das Dokument ist beschädigt: Es sagt nicht, wo seine Querverweistabelle ist</translation>
    </message>
    <message>
        <source>there are no random numbers</source>
        <translation>es gibt keine Zufallszahlen</translation>
    </message>
    <message>
        <source>the document is damaged: it has no cross-reference where it says</source>
        <translation>das Dokument ist beschädigt: Wo es seine Querverweistabelle angibt, ist keine</translation>
    </message>
    <message>
        <source>the document has no numbers left for further objects</source>
        <translation>das Dokument hat keine Nummern für weitere Objekte mehr</translation>
    </message>
    <message>
        <source>the document is damaged: one object is two</source>
        <translation>das Dokument ist beschädigt: Ein Objekt ist zweierlei</translation>
    </message>
    <message>
        <source>the document is too large</source>
        <translation>das Dokument ist zu groß</translation>
    </message>
    <message>
        <source>the signature is longer than the room for it</source>
        <translation>die Signatur ist länger als der Platz für sie</translation>
    </message>
    <message>
        <source>the sealed ink is not in a form that this version knows</source>
        <translation>die versiegelte Tinte hat eine Form, die diese Version nicht kennt</translation>
    </message>
    <message>
        <source>what the ink is to be sealed for is no certificate in PEM</source>
        <translation>das Zertifikat, für das die Tinte versiegelt werden soll, liegt nicht im PEM-Format vor</translation>
    </message>
    <message>
        <source>the ink cannot be sealed for this certificate: %1</source>
        <translation>die Tinte lässt sich für dieses Zertifikat nicht versiegeln: %1</translation>
    </message>
    <message>
        <source>the private key is not in PEM, or it has a password</source>
        <translation>der private Schlüssel liegt nicht im PEM-Format vor, oder er hat ein Passwort</translation>
    </message>
    <message>
        <source>the private key is not in PEM, or the password is not its own</source>
        <translation>der private Schlüssel liegt nicht im PEM-Format vor, oder das Passwort passt nicht zu ihm</translation>
    </message>
    <message>
        <source>the ink cannot be sealed: %1</source>
        <translation>die Tinte lässt sich nicht versiegeln: %1</translation>
    </message>
    <message>
        <source>the sealed ink is not AuthEnvelopedData</source>
        <translation>die versiegelte Tinte ist kein AuthEnvelopedData</translation>
    </message>
    <message>
        <source>the sealed ink cannot be opened: it was changed, or is for another key</source>
        <translation>die versiegelte Tinte lässt sich nicht öffnen: Sie wurde geändert oder ist für einen anderen Schlüssel</translation>
    </message>
    <message>
        <source>the sealed ink was made for another document</source>
        <translation>die versiegelte Tinte gehört zu einem anderen Dokument</translation>
    </message>
    <message>
        <source>the sealed ink was made for an earlier revision of the document</source>
        <translation>die versiegelte Tinte gehört zu einer früheren Fassung des Dokuments</translation>
    </message>
    <message>
        <source>the sealed ink cannot be read: %1</source>
        <translation>die versiegelte Tinte lässt sich nicht lesen: %1</translation>
    </message>
    <message>
        <source>the certificate is not a PKCS#12 file</source>
        <translation>das Zertifikat ist keine PKCS#12-Datei</translation>
    </message>
    <message>
        <source>it is not valid yet</source>
        <translation>es ist noch nicht gültig</translation>
    </message>
    <message>
        <source>it has expired</source>
        <translation>es ist abgelaufen</translation>
    </message>
    <message>
        <source>it is not meant for signatures</source>
        <translation>es ist nicht für Signaturen bestimmt</translation>
    </message>
    <message>
        <source>the signature cannot be made</source>
        <translation>die Signatur lässt sich nicht erzeugen</translation>
    </message>
    <message>
        <source>the certificate&apos;s file has a password</source>
        <translation>die Datei des Zertifikats hat ein Passwort</translation>
    </message>
    <message>
        <source>the password is not that of the certificate&apos;s file</source>
        <translation>das Passwort ist nicht das der Zertifikatsdatei</translation>
    </message>
    <message>
        <source>the certificate&apos;s file cannot be read</source>
        <translation>die Datei des Zertifikats lässt sich nicht lesen</translation>
    </message>
    <message>
        <source>the certificate&apos;s file lacks the private key or its certificate</source>
        <translation>der Datei des Zertifikats fehlt der private Schlüssel oder dessen Zertifikat</translation>
    </message>
    <message>
        <source>the certificate cannot be used: %1</source>
        <translation>das Zertifikat ist nicht verwendbar: %1</translation>
    </message>
    <message>
        <source>the signature is longer than the place for it</source>
        <translation>die Signatur ist länger als die Stelle für sie</translation>
    </message>
    <message>
        <source>its /ByteRange does not name two ranges</source>
        <translation>ihr /ByteRange nennt nicht zwei Bereiche</translation>
    </message>
    <message>
        <source>its /ByteRange is not made of sizes</source>
        <translation>ihr /ByteRange besteht nicht aus Größen</translation>
    </message>
    <message>
        <source>what it covers does not begin with the file</source>
        <translation>was sie umfasst, beginnt nicht mit der Datei</translation>
    </message>
    <message>
        <source>the ranges that it covers overlap</source>
        <translation>die Bereiche, die sie umfasst, überlappen sich</translation>
    </message>
    <message>
        <source>it covers more than there is: the file is cut off</source>
        <translation>sie umfasst mehr, als da ist: Die Datei ist abgeschnitten</translation>
    </message>
    <message>
        <source>what it leaves out is more than the signature</source>
        <translation>was sie auslässt, ist mehr als die Signatur</translation>
    </message>
    <message>
        <source>what it leaves out is another signature</source>
        <translation>was sie auslässt, ist eine andere Signatur</translation>
    </message>
    <message>
        <source>it is too long</source>
        <translation>sie ist zu lang</translation>
    </message>
    <message>
        <source>it is no CMS signature</source>
        <translation>sie ist keine CMS-Signatur</translation>
    </message>
    <message>
        <source>something else stands after it in its place</source>
        <translation>hinter ihr steht an ihrer Stelle noch etwas anderes</translation>
    </message>
    <message>
        <source>it holds what it signs instead of the document&apos;s digest</source>
        <translation>sie enthält das Signierte selbst statt des Hashwerts des Dokuments</translation>
    </message>
    <message>
        <source>its digest is of a kind that is not safe or not known</source>
        <translation>ihr Hashwert ist von einer unsicheren oder unbekannten Art</translation>
    </message>
    <message>
        <source>it does not say which certificate it was made with</source>
        <translation>sie sagt nicht, mit welchem Zertifikat sie erzeugt wurde</translation>
    </message>
    <message>
        <source>it was made with another certificate than the one that it brings</source>
        <translation>sie wurde mit einem anderen Zertifikat erzeugt als dem, das sie mitbringt</translation>
    </message>
    <message>
        <source>the document was changed after it</source>
        <translation>das Dokument wurde nach ihr geändert</translation>
    </message>
    <message>
        <source>the key of its certificate cannot be read</source>
        <translation>der Schlüssel ihres Zertifikats ist nicht lesbar</translation>
    </message>
    <message>
        <source>it was changed, or made with another key than its certificate&apos;s</source>
        <translation>sie wurde geändert oder mit einem anderen Schlüssel als dem ihres Zertifikats erzeugt</translation>
    </message>
    <message>
        <source>it is not one over a document</source>
        <translation>sie gilt keinem Dokument</translation>
    </message>
    <message>
        <source>there is no certificate in PEM among what is to be trusted</source>
        <translation>unter den Zertifikaten, denen vertraut werden soll, ist keines im PEM-Format</translation>
    </message>
    <message>
        <source>its certificate is not meant for signatures</source>
        <translation>ihr Zertifikat ist nicht für Signaturen bestimmt</translation>
    </message>
    <message>
        <source>it is not of exactly one signer</source>
        <translation>sie stammt nicht von genau einer Person</translation>
    </message>
    <message>
        <source>the signer&apos;s certificate is missing</source>
        <translation>das Zertifikat der signierenden Person fehlt</translation>
    </message>
    <message>
        <source>what it says stands apart from it</source>
        <translation>was sie aussagt, steht getrennt von ihr</translation>
    </message>
    <message>
        <source>what it says was changed after it</source>
        <translation>was sie aussagt, wurde nach ihr geändert</translation>
    </message>
    <message>
        <source>what it covers does not have it as a signature</source>
        <translation>was sie umfasst, enthält sie nicht als Signatur</translation>
    </message>
    <message>
        <source>it certifies the document against that, but afterwards %1</source>
        <translation>sie zertifiziert das Dokument dagegen, doch danach %1</translation>
    </message>
    <message>
        <source>it locks fields, but afterwards %1</source>
        <translation>sie sperrt Felder, doch danach %1</translation>
    </message>
    <message>
        <source>what was changed after it cannot be judged: %1</source>
        <translation>was nach ihr geändert wurde, lässt sich nicht beurteilen: %1</translation>
    </message>
    <message>
        <source>it is no dictionary</source>
        <translation>sie ist kein Dictionary-Objekt</translation>
    </message>
    <message>
        <source>it is of a kind that is not known here: %1</source>
        <translation>sie ist von einer hier unbekannten Art: %1</translation>
    </message>
    <message>
        <source>none named</source>
        <translation>keine genannt</translation>
    </message>
    <message>
        <source>it has no /Contents</source>
        <translation>sie hat kein /Contents</translation>
    </message>
    <message>
        <source>the sealed ink is not within what was signed</source>
        <translation>die versiegelte Tinte liegt nicht in dem, was signiert wurde</translation>
    </message>
    <message>
        <source>it has too many signatures to verify them all</source>
        <translation>es hat zu viele Signaturen, um alle zu prüfen</translation>
    </message>
    <message>
        <source>it is in several fields</source>
        <translation>sie steht in mehreren Feldern</translation>
    </message>
    <message>
        <source>there is sealed ink in several places; name the field</source>
        <translation>versiegelte Tinte steht an mehreren Stellen; nennen Sie das Feld</translation>
    </message>
    <message>
        <source>the signature %1 is not valid: %2</source>
        <translation>die Signatur %1 ist nicht gültig: %2</translation>
    </message>
    <message>
        <source>there is no sealed ink</source>
        <translation>es gibt keine versiegelte Tinte</translation>
    </message>
    <message>
        <source>there is no sealed ink in the field %1</source>
        <translation>im Feld %1 gibt es keine versiegelte Tinte</translation>
    </message>
    <message>
        <source>it is damaged</source>
        <translation>sie ist beschädigt</translation>
    </message>
    <message>
        <source>how the document is encrypted was changed after it</source>
        <translation>wie das Dokument verschlüsselt ist, wurde nach ihr geändert</translation>
    </message>
    <message>
        <source>there is too much to compare</source>
        <translation>es ist zu viel zu vergleichen</translation>
    </message>
</context>
<context>
    <name>Simulator</name>
    <message>
        <source>standard output</source>
        <translation>Standardausgabe</translation>
    </message>
    <message>
        <source>is not a grey PGM picture, which would begin with P5 or P2</source>
        <translation>ist kein PGM-Graustufenbild; ein solches beginnt mit P5 oder P2</translation>
    </message>
    <message>
        <source>the header does not give width, height and largest grey value</source>
        <translation>der Kopf nennt nicht Breite, Höhe und größten Grauwert</translation>
    </message>
    <message>
        <source>width or height is not within 1 to 16384</source>
        <translation>Breite oder Höhe liegt nicht zwischen 1 und 16384</translation>
    </message>
    <message>
        <source>no white space between header and picture</source>
        <translation>zwischen Kopf und Bild fehlt der Zwischenraum</translation>
    </message>
    <message>
        <source>usage: scribera-sim-fingerprint --pattern NAME [--seed N] [-o FILE]
Writes a synthetic fingerprint as a grey PGM picture of 208x288 pixels.

  --pattern NAME  ridges: loop, whorl or arch
  --seed N        0 or a positive integer, default 1; the same seed gives the same bytes
  -o FILE         file to write, default standard output
  --help          this text
  --version       name and version

Exit code: 0 done, 1 the file cannot be written, 2 wrong arguments.
</source>
        <translation>Aufruf: scribera-sim-fingerprint --pattern NAME [--seed N] [-o DATEI]
Schreibt einen künstlichen Fingerabdruck als PGM-Graustufenbild von 208x288 Pixeln.

  --pattern NAME  Linien: loop (Schleife), whorl (Wirbel) oder arch (Bogen)
  --seed N        0 oder eine positive ganze Zahl, Vorgabe 1; gleicher Startwert,
                  gleiche Bytes
  -o DATEI        Zieldatei, Vorgabe Standardausgabe
  --help          diesen Text anzeigen
  --version       Name und Version anzeigen

Exit-Code: 0 erledigt, 1 die Datei lässt sich nicht schreiben, 2 falsche Argumente.
</translation>
    </message>
    <message>
        <source>more than 16 columns</source>
        <translation>mehr als 16 Spalten</translation>
    </message>
    <message>
        <source>neither a count line nor a row of 4 columns (seconds x y pressure)</source>
        <translation>weder eine Zeile mit der Anzahl noch eine mit 4 Spalten (Sekunden x y Druck)</translation>
    </message>
    <message>
        <source>the count line is not 0 or a positive integer</source>
        <translation>die Anzahl ist weder 0 noch eine positive ganze Zahl</translation>
    </message>
    <message>
        <source>a row needs 5 columns or more: x y milliseconds pen_down ... pressure</source>
        <translation>eine Zeile braucht mindestens 5 Spalten: x y Millisekunden pen_down ... Druck</translation>
    </message>
    <message>
        <source>pen_down is neither 0 nor 1</source>
        <translation>pen_down ist weder 0 noch 1</translation>
    </message>
    <message>
        <source>a row needs 4 columns: seconds x y pressure</source>
        <translation>eine Zeile braucht 4 Spalten: Sekunden x y Druck</translation>
    </message>
    <message>
        <source>the pressure is not within 0 to 1</source>
        <translation>der Druck liegt nicht zwischen 0 und 1</translation>
    </message>
    <message>
        <source>the pressure is negative</source>
        <translation>der Druck ist negativ</translation>
    </message>
    <message>
        <source>the time is before the previous row&apos;s</source>
        <translation>die Zeit ist früher als in der vorigen Zeile</translation>
    </message>
    <message>
        <source>the time is too long after the first row&apos;s</source>
        <translation>der Abstand zur Zeit der ersten Zeile ist zu groß</translation>
    </message>
    <message>
        <source>more than one file</source>
        <translation>mehr als eine Datei</translation>
    </message>
    <message>
        <source>no file named</source>
        <translation>keine Datei angegeben</translation>
    </message>
    <message>
        <source>a second introduction</source>
        <translation>eine zweite Anmeldung</translation>
    </message>
    <message>
        <source>the first message is no introduction</source>
        <translation>die erste Nachricht ist keine Anmeldung</translation>
    </message>
    <message>
        <source>a switch that is neither on nor off</source>
        <translation>ein Schalter, der weder ein noch aus ist</translation>
    </message>
    <message>
        <source>not this protocol</source>
        <translation>nicht dieses Protokoll</translation>
    </message>
    <message>
        <source>a text that is not printable</source>
        <translation>ein Text mit nicht druckbaren Zeichen</translation>
    </message>
    <message>
        <source>a model text that is not printable</source>
        <translation>ein Modelltext mit nicht druckbaren Zeichen</translation>
    </message>
    <message>
        <source>unknown message type</source>
        <translation>unbekannte Art von Nachricht</translation>
    </message>
    <message>
        <source>a picture whose length is not width x height x 2, or with too long a side</source>
        <translation>ein Bild, dessen Länge nicht Breite x Höhe x 2 ist oder das eine zu lange Seite hat</translation>
    </message>
    <message>
        <source>model has no name or one of more than 64 bytes</source>
        <translation>model hat keinen Namen oder einen von mehr als 64 Bytes</translation>
    </message>
    <message>
        <source>area needs four numbers: originX originY width height</source>
        <translation>area braucht vier Zahlen: originX originY width height</translation>
    </message>
    <message>
        <source>a sample needs five numbers: milliseconds x y pressure status</source>
        <translation>ein Messwert braucht fünf Zahlen: Millisekunden x y Druck Status</translation>
    </message>
    <message>
        <source>the Base64 text ends within a group of four</source>
        <translation>der Base64-Text endet mitten in einer Vierergruppe</translation>
    </message>
    <message>
        <source>the last Base64 digit carries bits that belong to no byte</source>
        <translation>die letzte Base64-Ziffer enthält Bits, die zu keinem Byte gehören</translation>
    </message>
    <message>
        <source>neither a recording nor an ink packet stream, it is empty</source>
        <translation>weder eine Aufzeichnung noch ein Tintenstrom: Die Datei ist leer</translation>
    </message>
    <message>
        <source>the byte behind the last record is not zero</source>
        <translation>das Byte hinter dem letzten Datensatz ist nicht null</translation>
    </message>
    <message>
        <source>a whole name in round joined letters</source>
        <translation>ein ganzer Name in runden, verbundenen Buchstaben</translation>
    </message>
    <message>
        <source>two large capitals with full stops over a line</source>
        <translation>zwei große Buchstaben mit Punkten über einer Linie</translation>
    </message>
    <message>
        <source>a hurried name that ends in a looping flourish</source>
        <translation>ein eiliger Name, der in einem Schnörkel endet</translation>
    </message>
    <message>
        <source>there is no display; DISPLAY and WAYLAND_DISPLAY are not set</source>
        <translation>es gibt keinen Bildschirm; DISPLAY und WAYLAND_DISPLAY sind nicht gesetzt</translation>
    </message>
    <message>
        <source>is no path for a socket</source>
        <translation>ist kein Pfad für einen Socket</translation>
    </message>
    <message>
        <source>another virtual pad is listening there</source>
        <translation>dort nimmt schon ein anderes virtuelles Pad Verbindungen an</translation>
    </message>
    <message>
        <source>is there already, and no socket</source>
        <translation>ist schon da und kein Socket</translation>
    </message>
    <message>
        <source>somebody else is listening there</source>
        <translation>dort nimmt schon ein anderes Programm Verbindungen an</translation>
    </message>
    <message>
        <source>no host takes the fingerprint</source>
        <translation>kein Host nimmt den Fingerabdruck an</translation>
    </message>
    <message>
        <source>%1: cannot be opened: %2</source>
        <translation>%1: lässt sich nicht öffnen: %2</translation>
    </message>
    <message>
        <source>%1: cannot be examined: %2</source>
        <translation>%1: lässt sich nicht untersuchen: %2</translation>
    </message>
    <message>
        <source>%1: is not a regular file</source>
        <translation>%1: ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>%1: is larger than 64 MiB</source>
        <translation>%1: ist größer als 64 MiB</translation>
    </message>
    <message>
        <source>%1: cannot be read: %2</source>
        <translation>%1: lässt sich nicht lesen: %2</translation>
    </message>
    <message>
        <source>%1: cannot be written: %2</source>
        <translation>%1: lässt sich nicht schreiben: %2</translation>
    </message>
    <message>
        <source>the largest grey value is %1, not 255</source>
        <translation>der größte Grauwert ist %1, nicht 255</translation>
    </message>
    <message>
        <source>more than %1 x %2 grey values</source>
        <translation>mehr als %1 x %2 Grauwerte</translation>
    </message>
    <message>
        <source>grey value %1 is not an integer from 0 to 255</source>
        <translation>Grauwert %1 ist keine ganze Zahl von 0 bis 255</translation>
    </message>
    <message>
        <source>fewer than %1 x %2 grey values</source>
        <translation>weniger als %1 x %2 Grauwerte</translation>
    </message>
    <message>
        <source>Try &apos;%1 --help&apos;.</source>
        <translation>Siehe „%1 --help“.</translation>
    </message>
    <message>
        <source>unknown argument &apos;%1&apos;</source>
        <translation>unbekanntes Argument „%1“</translation>
    </message>
    <message>
        <source>%1 needs a value</source>
        <translation>%1 braucht einen Wert</translation>
    </message>
    <message>
        <source>there is no pattern &apos;%1&apos;</source>
        <translation>es gibt kein Muster „%1“</translation>
    </message>
    <message>
        <source>the seed &apos;%1&apos; is not 0 or a positive integer</source>
        <translation>der Startwert „%1“ ist weder 0 noch eine positive ganze Zahl</translation>
    </message>
    <message>
        <source>%1 is missing</source>
        <translation>%1 fehlt</translation>
    </message>
    <message>
        <source>%1: no rows</source>
        <translation>%1: keine Zeilen</translation>
    </message>
    <message>
        <source>%1:%2: the count line says %3, but there are %4 rows</source>
        <translation>%1:%2: als Anzahl ist %3 angegeben, es sind aber %4 Zeilen</translation>
    </message>
    <message>
        <source>column %1 is not a number, or too large</source>
        <translation>Spalte %1 ist keine Zahl oder zu groß</translation>
    </message>
    <message>
        <source>%1:%2: position or pressure outside the pad&apos;s range for %3</source>
        <translation>%1:%2: Position oder Druck liegt außerhalb des Bereichs von %3</translation>
    </message>
    <message>
        <source>usage: scribera-sim-import [--model MODEL] [--pad] [--flip-y] FILE [-o OUT]
Turns handwriting into a recording for the simulated pad. FILE is one of
  a count line, then rows: x y milliseconds pen_down [azimuth tilt ...] pressure
  rows without a count line: seconds x y pressure, pressure 0 to 1, 0 in the air

  --model MODEL  pad to write on, default SCT580; one of these, also without SC:
                 %1
  --pad          the positions, and pressures that are no shares of 1, are pad units already:
                 do not scale them
  --flip-y       turn upside down: in the file y grows upwards
  -o OUT         file to write, default standard output
  --help         this text
  --version      name and version

Without --pad the written part is scaled to the pad&apos;s writing area with a margin, proportions kept,
and the file&apos;s largest pressure becomes the pad&apos;s.
Exit code: 0 done, 1 the file is refused or OUT cannot be written, 2 wrong arguments.
</source>
        <translation>Aufruf: scribera-sim-import [--model MODELL] [--pad] [--flip-y] DATEI [-o ZIEL]
Macht aus Handschrift eine Aufzeichnung für das simulierte Pad. DATEI enthält entweder
  eine Zeile mit der Anzahl, dann Zeilen: x y Millisekunden pen_down [Azimut Neigung ...] Druck
  oder Zeilen ohne Anzahl davor: Sekunden x y Druck, Druck von 0 bis 1, 0 in der Luft

  --model MODELL Pad, auf dem geschrieben wird, Vorgabe SCT580; eines von diesen,
                 auch ohne SC:
                 %1
  --pad          die Positionen sind schon Pad-Einheiten, ebenso Druckwerte, die keine
                 Anteile von 1 sind: nicht skalieren
  --flip-y       auf den Kopf stellen: In der Datei wächst y nach oben
  -o ZIEL        Zieldatei, Vorgabe Standardausgabe
  --help         diesen Text anzeigen
  --version      Name und Version anzeigen

Ohne --pad wird das Geschriebene mit Rand und in gleichen Proportionen auf die Schreibfläche des Pads
skaliert, und der größte Druck der Datei wird zum größten Druck des Pads.
Exit-Code: 0 erledigt, 1 die Datei wird abgelehnt oder ZIEL lässt sich nicht schreiben,
2 falsche Argumente.
</translation>
    </message>
    <message>
        <source>warning: %1</source>
        <translation>Warnung: %1</translation>
    </message>
    <message>
        <source>%1: the pen is never down</source>
        <translation>%1: der Stift setzt nie auf</translation>
    </message>
    <message>
        <source>%1: no row with the pen down has any pressure</source>
        <translation>%1: keine Zeile mit aufgesetztem Stift hat Druck</translation>
    </message>
    <message>
        <source>there is no model &apos;%1&apos;</source>
        <translation>es gibt kein Modell „%1“</translation>
    </message>
    <message>
        <source>unknown option &apos;%1&apos;</source>
        <translation>unbekannte Option „%1“</translation>
    </message>
    <message>
        <source>unknown message type %1</source>
        <translation>unbekannte Art von Nachricht: %1</translation>
    </message>
    <message>
        <source>a message of type %1 cannot have %2 bytes</source>
        <translation>eine Nachricht der Art %1 kann nicht %2 Bytes haben</translation>
    </message>
    <message>
        <source>samples whose length is no multiple of %1</source>
        <translation>Messwerte, deren Länge kein Vielfaches von %1 ist</translation>
    </message>
    <message>
        <source>%1: cannot be made: %2</source>
        <translation>%1: lässt sich nicht anlegen: %2</translation>
    </message>
    <message>
        <source>%1: is no folder that belongs to this user alone</source>
        <translation>%1: ist kein Ordner, der diesem Benutzer allein gehört</translation>
    </message>
    <message>
        <source>%1: is longer than a socket&apos;s path may be, %2 bytes</source>
        <translation>%1: ist länger, als der Pfad eines Sockets sein darf (%2 Bytes)</translation>
    </message>
    <message>
        <source>header line %1 behind the first sample</source>
        <translation>Kopfzeile %1 steht hinter dem ersten Messwert</translation>
    </message>
    <message>
        <source>second header line &apos;%1&apos;</source>
        <translation>zweite Kopfzeile „%1“</translation>
    </message>
    <message>
        <source>max-pressure %1 is not an integer from 1 to 1000000</source>
        <translation>max-pressure %1 ist keine ganze Zahl von 1 bis 1000000</translation>
    </message>
    <message>
        <source>unknown header line %1</source>
        <translation>unbekannte Kopfzeile %1</translation>
    </message>
    <message>
        <source>area number %1 is no integer or out of range</source>
        <translation>die Zahl %1 von area ist nicht ganz oder außerhalb des Bereichs</translation>
    </message>
    <message>
        <source>header line &apos;%1&apos; is missing</source>
        <translation>die Kopfzeile „%1“ fehlt</translation>
    </message>
    <message>
        <source>%1 is not an integer</source>
        <translation>%1 ist keine ganze Zahl</translation>
    </message>
    <message>
        <source>%1 does not fit into 32 bits</source>
        <translation>%1 passt nicht in 32 Bits</translation>
    </message>
    <message>
        <source>time %1 is not within 0 to 1000000000 ms</source>
        <translation>die Zeit %1 liegt nicht zwischen 0 und 1000000000 ms</translation>
    </message>
    <message>
        <source>time %1 is before the previous sample&apos;s</source>
        <translation>die Zeit %1 liegt vor der des vorigen Messwerts</translation>
    </message>
    <message>
        <source>byte %1 is not of the Base64 alphabet, and a recording would begin with &apos;%2&apos;</source>
        <translation>das Byte %1 gehört nicht zum Base64-Alphabet, und eine Aufzeichnung finge mit „%2“ an</translation>
    </message>
    <message>
        <source>the first line is not &apos;%1&apos;</source>
        <translation>die erste Zeile ist nicht „%1“</translation>
    </message>
    <message>
        <source>the stream has %1 bytes, which is no number of 24-byte records and one byte</source>
        <translation>der Strom hat %1 Bytes; das sind nicht Datensätze von 24 Bytes und ein Byte</translation>
    </message>
    <message>
        <source>record %1: status %2 is neither 0 nor 1</source>
        <translation>Datensatz %1: Status %2 ist weder 0 noch 1</translation>
    </message>
    <message>
        <source>record %1: its tick goes back, or is over 1000000000 ms after the first</source>
        <translation>Datensatz %1: die Zeit geht zurück oder liegt mehr als 1000000000 ms nach der ersten</translation>
    </message>
    <message>
        <source>usage: scribera-sim-generate --style NAME [--seed N] [--model MODEL] [-o FILE]
Writes a synthetic signature as a recording for the simulated pad.

  --style NAME   kind of signature:
%1  --seed N       0 or a positive integer, default 1; the same seed gives the same bytes
  --model MODEL  pad it is written on, default SCT580; one of these, also without SC:
                 %2
  -o FILE        file to write, default standard output
  --help         this text
  --version      name and version

Exit code: 0 done, 1 the file cannot be written, 2 wrong arguments.
</source>
        <translation>Aufruf: scribera-sim-generate --style NAME [--seed N] [--model MODELL] [-o DATEI]
Schreibt eine künstliche Unterschrift als Aufzeichnung für das simulierte Pad.

  --style NAME   Art der Unterschrift:
%1  --seed N       0 oder eine positive ganze Zahl, Vorgabe 1; gleicher Startwert,
                 gleiche Bytes
  --model MODELL Pad, auf dem geschrieben wird, Vorgabe SCT580; eines von diesen,
                 auch ohne SC:
                 %2
  -o DATEI       Zieldatei, Vorgabe Standardausgabe
  --help         diesen Text anzeigen
  --version      Name und Version anzeigen

Exit-Code: 0 erledigt, 1 die Datei lässt sich nicht schreiben, 2 falsche Argumente.
</translation>
    </message>
    <message>
        <source>there is no style &apos;%1&apos;</source>
        <translation>es gibt keine Art „%1“</translation>
    </message>
    <message>
        <source>%1: cannot be written</source>
        <translation>%1: lässt sich nicht schreiben</translation>
    </message>
    <message>
        <source>%1; try --help</source>
        <translation>%1; siehe --help</translation>
    </message>
    <message>
        <source>cannot be locked: %1</source>
        <translation>lässt sich nicht sperren: %1</translation>
    </message>
    <message>
        <source>cannot listen there: %1</source>
        <translation>dort lassen sich keine Verbindungen annehmen: %1</translation>
    </message>
    <message>
        <source>%1 has no fingerprint sensor</source>
        <translation>%1 hat keinen Fingerabdrucksensor</translation>
    </message>
</context>
<context>
    <name>Tools</name>
    <message>
        <source>%1: point %2: %3</source>
        <translation>%1: Punkt %2: %3</translation>
    </message>
    <message>
        <source>%1 %2 is not within %3 to %4</source>
        <translation>%1 %2 liegt nicht zwischen %3 und %4</translation>
    </message>
    <message>
        <source>time %1 is before the previous point&apos;s, %2</source>
        <translation>die Zeit %1 liegt vor der des vorigen Punkts, %2</translation>
    </message>
    <message>
        <source>the picture has more than a gigabyte, or more than there is memory</source>
        <translation>das Bild hat mehr als ein Gigabyte oder mehr, als Speicher da ist</translation>
    </message>
    <message>
        <source>the picture cannot be made</source>
        <translation>das Bild lässt sich nicht erzeugen</translation>
    </message>
    <message>
        <source>the document cannot be made</source>
        <translation>das Dokument lässt sich nicht erzeugen</translation>
    </message>
    <message>
        <source>the drawing has more than a gigabyte</source>
        <translation>die Zeichnung hat mehr als ein Gigabyte</translation>
    </message>
    <message>
        <source>%1: cannot be read: %2</source>
        <translation>%1: lässt sich nicht lesen: %2</translation>
    </message>
    <message>
        <source>%1: is larger than %2 MiB</source>
        <translation>%1: ist größer als %2 MiB</translation>
    </message>
    <message>
        <source>standard input</source>
        <translation>Standardeingabe</translation>
    </message>
    <message>
        <source>%1: cannot be opened: %2</source>
        <translation>%1: lässt sich nicht öffnen: %2</translation>
    </message>
    <message>
        <source>the ink has %1 x %2 mm</source>
        <translation>die Tinte misst %1 x %2 mm</translation>
    </message>
    <message>
        <source>the ink has %1 x %2 pad units</source>
        <translation>die Tinte misst %1 x %2 Pad-Einheiten</translation>
    </message>
    <message>
        <source>there is no ink</source>
        <translation>es gibt keine Tinte</translation>
    </message>
    <message>
        <source>there are only dots</source>
        <translation>es gibt nur Punkte</translation>
    </message>
    <message numerus="yes">
        <source>the strokes have %n steps</source>
        <translation>
            <numerusform>die Striche haben %n Schritt</numerusform>
            <numerusform>die Striche haben %n Schritte</numerusform>
        </translation>
    </message>
    <message>
        <source>the pen wrote for %1 ms</source>
        <translation>der Stift schrieb %1 ms lang</translation>
    </message>
    <message>
        <source>the ink is one straight line</source>
        <translation>die Tinte ist eine einzige gerade Linie</translation>
    </message>
    <message>
        <source>has a document type, which is not read</source>
        <translation>hat einen Dokumenttyp; solche Dokumente werden nicht gelesen</translation>
    </message>
    <message>
        <source>is not an InkML document</source>
        <translation>ist kein InkML-Dokument</translation>
    </message>
    <message>
        <source>reference %1 leads to nothing above it</source>
        <translation>der Verweis %1 führt zu nichts, was darüber steht</translation>
    </message>
    <message>
        <source>groups lie deeper than %1</source>
        <translation>Gruppen sind tiefer als %1 verschachtelt</translation>
    </message>
    <message>
        <source>the trace format has no channels X and Y</source>
        <translation>das Spurformat hat keine Kanäle X und Y</translation>
    </message>
    <message>
        <source>has too many channels</source>
        <translation>hat zu viele Kanäle</translation>
    </message>
    <message>
        <source>the first tick is not a whole number</source>
        <translation>die erste Zeitangabe ist keine ganze Zahl</translation>
    </message>
    <message>
        <source>value %1 is not a number</source>
        <translation>Wert %1 ist keine Zahl</translation>
    </message>
    <message>
        <source>has %1 of the %2 values</source>
        <translation>hat %1 der %2 Werte</translation>
    </message>
    <message>
        <source>has more than the %1 values</source>
        <translation>hat mehr als die %1 Werte</translation>
    </message>
    <message>
        <source>a value does not fit into 64 bits</source>
        <translation>ein Wert passt nicht in 64 Bits</translation>
    </message>
    <message>
        <source>position in pad units: x blue, y orange</source>
        <translation>Position in Pad-Einheiten: x blau, y orange</translation>
    </message>
    <message>
        <source>pressure</source>
        <translation>Druck</translation>
    </message>
    <message>
        <source>speed in mm/s</source>
        <translation>Geschwindigkeit in mm/s</translation>
    </message>
    <message>
        <source>speed in pad units a second</source>
        <translation>Geschwindigkeit in Pad-Einheiten je Sekunde</translation>
    </message>
    <message>
        <source>seconds; the pen is lifted where it is grey</source>
        <translation>Sekunden; wo es grau ist, ist der Stift abgehoben</translation>
    </message>
    <message>
        <source>there are no points to plot</source>
        <translation>es gibt keine Punkte zum Auftragen</translation>
    </message>
    <message>
        <source>is not the header line %1</source>
        <translation>ist nicht die Kopfzeile %1</translation>
    </message>
    <message>
        <source>is not six whole numbers with commas between them</source>
        <translation>besteht nicht aus sechs ganzen Zahlen mit Kommas dazwischen</translation>
    </message>
    <message>
        <source>%1: has no list of points</source>
        <translation>%1: enthält keine Liste von Punkten</translation>
    </message>
    <message>
        <source>%1 is not a whole number</source>
        <translation>%1 ist keine ganze Zahl</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
    <message>
        <source>none</source>
        <comment>date</comment>
        <translation>keines</translation>
    </message>
    <message>
        <source>yyyy-MM-dd HH:mm:ss &apos;UTC&apos;</source>
        <comment>date and time, in Qt&apos;s letters</comment>
        <translation>dd.MM.yyyy HH:mm:ss &apos;UTC&apos;</translation>
    </message>
    <message>
        <source>none</source>
        <comment>no value</comment>
        <translation>keine Angabe</translation>
    </message>
    <message>
        <source>%1 s</source>
        <comment>seconds</comment>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>points:</source>
        <translation>Punkte:</translation>
    </message>
    <message>
        <source>strokes:</source>
        <translation>Striche:</translation>
    </message>
    <message>
        <source>date:</source>
        <translation>Datum:</translation>
    </message>
    <message>
        <source>duration:</source>
        <translation>Dauer:</translation>
    </message>
    <message>
        <source>size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>%1 x %2 mm</source>
        <translation>%1 x %2 mm</translation>
    </message>
    <message>
        <source>pressure:</source>
        <translation>Druck:</translation>
    </message>
    <message>
        <source>report rate:</source>
        <translation>Abtastrate:</translation>
    </message>
    <message>
        <source>%1 points/s</source>
        <translation>%1 Punkte/s</translation>
    </message>
    <message>
        <source>gaps:</source>
        <translation>Lücken:</translation>
    </message>
    <message>
        <source>none</source>
        <comment>no gap</comment>
        <translation>keine</translation>
    </message>
    <message>
        <source>%1, the longest of %2</source>
        <translation>%1, die längste von %2</translation>
    </message>
    <message>
        <source>signed:</source>
        <translation>unterschrieben:</translation>
    </message>
    <message>
        <source>yes</source>
        <translation>ja</translation>
    </message>
    <message>
        <source>no, %1</source>
        <translation>nein, %1</translation>
    </message>
    <message>
        <source>the points span more than the %1 ms of the longest recording</source>
        <translation>die Punkte umfassen mehr als die %1 ms der längsten Aufzeichnung</translation>
    </message>
    <message>
        <source>status %1 is none of a pen or a key</source>
        <translation>der Status %1 gehört weder zu einem Stift noch zu einer Taste</translation>
    </message>
    <message>
        <source>there are more points than a stream can hold</source>
        <translation>es sind mehr Punkte, als ein Strom fasst</translation>
    </message>
    <message>
        <source>point %1: %2, which the format cannot hold</source>
        <translation>Punkt %1: %2; das kann das Format nicht aufnehmen</translation>
    </message>
    <message>
        <source>the record ends too early</source>
        <translation>der Datensatz endet zu früh</translation>
    </message>
    <message>
        <source>is not a signature record of ISO/IEC 19794-7</source>
        <translation>ist kein Unterschriftendatensatz nach ISO/IEC 19794-7</translation>
    </message>
    <message>
        <source>is not of the edition of 2007, the one that is read</source>
        <translation>ist nicht nach der Ausgabe von 2007; nur diese wird gelesen</translation>
    </message>
    <message>
        <source>the record has no channels X and Y</source>
        <translation>der Datensatz hat keine Kanäle X und Y</translation>
    </message>
    <message>
        <source>the linear part of channel %1 was removed, and cannot be put back</source>
        <translation>der lineare Anteil von Kanal %1 wurde entfernt und lässt sich nicht wiederherstellen</translation>
    </message>
    <message>
        <source>there are more points than the %1 of the format</source>
        <translation>es sind mehr Punkte als die %1 des Formats</translation>
    </message>
    <message>
        <source>x is %1</source>
        <translation>x ist %1</translation>
    </message>
    <message>
        <source>the pressure is %1</source>
        <translation>der Druck ist %1</translation>
    </message>
    <message>
        <source>comes after a pause of %1 ms</source>
        <translation>kommt nach einer Pause von %1 ms</translation>
    </message>
    <message>
        <source>the record ends before its %1 points do</source>
        <translation>der Datensatz endet vor seinen %1 Punkten</translation>
    </message>
    <message>
        <source>bytes follow the record</source>
        <translation>hinter dem Datensatz stehen noch Bytes</translation>
    </message>
    <message>
        <source>%1 bytes are not whole points of %2</source>
        <translation>%1 Bytes sind keine ganzen Punkte von je %2</translation>
    </message>
    <message>
        <source>--%1 %2 is not %3</source>
        <translation>--%1 %2: erwartet wird %3</translation>
    </message>
    <message>
        <source>one of %1</source>
        <translation>eines von %1</translation>
    </message>
    <message>
        <source>--model is missing</source>
        <translation>--model fehlt</translation>
    </message>
    <message>
        <source>WxH with sides of 1 to %1 pixels</source>
        <translation>BxH mit Seiten von 1 bis %1 Pixeln</translation>
    </message>
    <message>
        <source>1 to 10</source>
        <translation>1 bis 10</translation>
    </message>
    <message>
        <source>#rrggbb or the name of an opaque colour</source>
        <translation>#rrggbb oder der Name einer deckenden Farbe</translation>
    </message>
    <message>
        <source>150 or 300</source>
        <translation>150 oder 300</translation>
    </message>
    <message>
        <source>ends the process with exit code %1</source>
        <translation>beendet den Prozess mit dem Exit-Code %1</translation>
    </message>
    <message>
        <source>does not come back within %1 seconds</source>
        <translation>kehrt nicht innerhalb von %1 Sekunden zurück</translation>
    </message>
    <message>
        <source>there is no display</source>
        <translation>es gibt keinen Bildschirm</translation>
    </message>
    <message>
        <source>cannot be told (%1): change to one that is there</source>
        <translation>lässt sich nicht ermitteln (%1): Wechseln Sie in einen vorhandenen</translation>
    </message>
    <message>
        <source>the driver&apos;s own business; no input device is asked</source>
        <translation>Sache des Treibers; es wird kein Eingabegerät gefragt</translation>
    </message>
    <message>
        <source>%1 %2: nothing is logged; remove it</source>
        <translation>%1 %2: Es wird nichts protokolliert; entfernen Sie die Datei</translation>
    </message>
    <message>
        <source>%1 cannot be made: nothing is logged; make /tmp writable</source>
        <translation>%1 lässt sich nicht anlegen: Es wird nichts protokolliert; machen Sie /tmp beschreibbar</translation>
    </message>
    <message>
        <source>is no plain file</source>
        <translation>ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>has a second name</source>
        <translation>hat einen zweiten Namen</translation>
    </message>
    <message>
        <source>belongs to another user</source>
        <translation>gehört einem anderen Benutzer</translation>
    </message>
    <message>
        <source>cannot be written</source>
        <translation>lässt sich nicht schreiben</translation>
    </message>
    <message>
        <source>Qt %1 on %2</source>
        <translation>Qt %1 auf %2</translation>
    </message>
    <message>
        <source>the driver %1: ask its maker</source>
        <translation>der Treiber %1: Fragen Sie seinen Hersteller</translation>
    </message>
    <message>
        <source>not tried, for want of a driver</source>
        <translation>nicht versucht, da ein Treiber fehlt</translation>
    </message>
    <message>
        <source>The pad&apos;s driver: &apos;pen&apos; for pens and touch screens of this machine, &apos;simulated&apos;, or a file. Default ./%1, as hosts have it.</source>
        <translation>Der Treiber des Pads: „pen“ für Stifte und Touchscreens dieses Rechners, „simulated“ oder eine Datei. Vorgabe ist ./%1, wie bei Hosts.</translation>
    </message>
    <message>
        <source>--driver is empty</source>
        <translation>--driver ist leer</translation>
    </message>
    <message>
        <source>driver for pens and touch screens</source>
        <translation>Treiber für Stifte und Touchscreens</translation>
    </message>
    <message>
        <source>simulated pad</source>
        <translation>simuliertes Pad</translation>
    </message>
    <message>
        <source>a pad&apos;s own driver</source>
        <translation>eigener Treiber eines Pads</translation>
    </message>
    <message>
        <source>leads to %1, which is not there</source>
        <translation>verweist auf %1; das gibt es nicht</translation>
    </message>
    <message>
        <source>is not there</source>
        <translation>ist nicht vorhanden</translation>
    </message>
    <message>
        <source>is no file</source>
        <translation>ist keine Datei</translation>
    </message>
    <message>
        <source>cannot be read: no permission</source>
        <translation>lässt sich nicht lesen: keine Berechtigung</translation>
    </message>
    <message>
        <source>the current folder is gone</source>
        <translation>den aktuellen Ordner gibt es nicht mehr</translation>
    </message>
    <message>
        <source>%1, device type %2, of %3</source>
        <translation>%1, Gerätetyp %2, von %3</translation>
    </message>
    <message>
        <source>%1 x %2 units, the first at %3,%4</source>
        <translation>%1 x %2 Einheiten, die erste bei %3,%4</translation>
    </message>
    <message>
        <source>up to %1</source>
        <translation>bis %1</translation>
    </message>
    <message>
        <source>act when they are touched</source>
        <translation>wirken, sobald sie berührt werden</translation>
    </message>
    <message>
        <source>act when the pen is lifted from them</source>
        <translation>wirken, sobald der Stift von ihnen abgehoben wird</translation>
    </message>
    <message>
        <source>no folder can be made in %1: %2</source>
        <translation>in %1 lässt sich kein Ordner anlegen: %2</translation>
    </message>
    <message>
        <source>current folder</source>
        <translation>aktueller Ordner</translation>
    </message>
    <message>
        <source>Usage: scribera-pad COMMAND [options] [FILE]
Tells of signature pads, pens and touch screens, and takes signatures on them.

</source>
        <translation>Aufruf: scribera-pad BEFEHL [Optionen] [DATEI]
Gibt Auskunft über Unterschriftenpads, Stifte und Touchscreens und nimmt Unterschriften auf ihnen auf.

</translation>
    </message>
    <message>
        <source>This text.</source>
        <translation>Diesen Text anzeigen.</translation>
    </message>
    <message>
        <source>File to write; - is standard output.</source>
        <translation>Zieldatei; - ist die Standardausgabe.</translation>
    </message>
    <message>
        <source>no file named</source>
        <translation>keine Datei angegeben</translation>
    </message>
    <message>
        <source>this program was built without libevdev, and cannot ask input devices</source>
        <translation>dieses Programm wurde ohne libevdev gebaut und kann keine Eingabegeräte abfragen</translation>
    </message>
    <message>
        <source>yes: signed on</source>
        <translation>ja, darauf wird unterschrieben</translation>
    </message>
    <message>
        <source>yes, where SCRIBERA_PEN_DEVICE names it</source>
        <translation>ja, wenn SCRIBERA_PEN_DEVICE es nennt</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>x %1 to %2, y %3 to %4; the device does not tell its size</source>
        <translation>x %1 bis %2, y %3 bis %4; das Gerät meldet seine Größe nicht</translation>
    </message>
    <message>
        <source>%1 x %2 mm of %3 x %4 mm, %5 mm from the left and %6 mm from the top</source>
        <translation>%1 x %2 mm von %3 x %4 mm, %5 mm von links und %6 mm von oben</translation>
    </message>
    <message>
        <source>not felt; half of the pad&apos;s is told</source>
        <translation>wird nicht erfasst; gemeldet wird der halbe Höchstdruck des Pads</translation>
    </message>
    <message>
        <source>the recording is longer than the %1 ms that one may have</source>
        <translation>die Aufzeichnung ist länger als die zulässigen %1 ms</translation>
    </message>
    <message>
        <source>End after this time.</source>
        <translation>Nach dieser Zeit beenden.</translation>
    </message>
    <message>
        <source>cancelled; nothing is written</source>
        <translation>abgebrochen; es wird nichts geschrieben</translation>
    </message>
    <message>
        <source>the pen has done nothing; nothing is written</source>
        <translation>der Stift hat nichts getan; es wird nichts geschrieben</translation>
    </message>
    <message>
        <source>no descriptor is left</source>
        <translation>es ist kein Deskriptor mehr frei</translation>
    </message>
    <message>
        <source>--colour cannot be white: ink of that colour is taken for paper</source>
        <translation>--colour kann nicht Weiß sein: Tinte dieser Farbe gilt als Papier</translation>
    </message>
    <message>
        <source>File to save, as its suffix says: %1; the last two are the ink packet stream. May be given several times.</source>
        <translation>Zieldatei; die Endung bestimmt ihre Art: %1; die beiden letzten sind der Tintenstrom. Darf mehrfach angegeben werden.</translation>
    </message>
    <message>
        <source>Canvas in pixels; the whole writing area is on it. Default 400 high, in the proportions of the pad.</source>
        <translation>Leinwand in Pixeln; sie zeigt die ganze Schreibfläche. Vorgabe: 400 hoch, in den Proportionen des Pads.</translation>
    </message>
    <message>
        <source>Of the pen, 1 to 10, default 3; strokes follow it and the pressure.</source>
        <translation>Strichbreite, 1 bis 10, Vorgabe 3; der Druck verändert sie.</translation>
    </message>
    <message>
        <source>Of the ink as #rrggbb or by name, default black.</source>
        <translation>Farbe der Tinte als #rrggbb oder als Name, Vorgabe black.</translation>
    </message>
    <message>
        <source>Only the ink and 10 pixels around it.</source>
        <translation>Nur die Tinte und 10 Pixel darum herum.</translation>
    </message>
    <message>
        <source>Paper that is not seen, in PNG.</source>
        <translation>Durchsichtiges Papier, in PNG.</translation>
    </message>
    <message>
        <source>Wait no longer than this.</source>
        <translation>Nicht länger als diese Zeit warten.</translation>
    </message>
    <message>
        <source>Show the canvas and buttons in a window.</source>
        <translation>Leinwand und Schaltflächen in einem Fenster zeigen.</translation>
    </message>
    <message>
        <source>--output is missing</source>
        <translation>--output fehlt</translation>
    </message>
    <message>
        <source>%1 has none of the suffixes %2</source>
        <translation>%1 hat keine der Endungen %2</translation>
    </message>
    <message>
        <source>Please sign</source>
        <translation>Bitte unterschreiben</translation>
    </message>
    <message>
        <source>The pad does not answer</source>
        <translation>Das Pad antwortet nicht</translation>
    </message>
    <message>
        <source>the pen cannot be set</source>
        <translation>der Stift lässt sich nicht einstellen</translation>
    </message>
    <message>
        <source>nobody confirmed in time; nothing is saved</source>
        <translation>niemand hat rechtzeitig bestätigt; es wird nichts gespeichert</translation>
    </message>
    <message>
        <source>cancelled; nothing is saved</source>
        <translation>abgebrochen; es wird nichts gespeichert</translation>
    </message>
    <message>
        <source>confirmed without a signature; nothing is saved</source>
        <translation>ohne Unterschrift bestätigt; es wird nichts gespeichert</translation>
    </message>
    <message>
        <source>it is a folder</source>
        <translation>es ist ein Ordner</translation>
    </message>
    <message>
        <source>no permission</source>
        <translation>keine Berechtigung</translation>
    </message>
    <message>
        <source>The pad: %1; the pads&apos; own names, such as SCK210, too. Default K210.</source>
        <translation>Das Pad: %1; auch die eigenen Namen der Pads, etwa SCK210. Vorgabe K210.</translation>
    </message>
    <message>
        <source>%1 key %2</source>
        <translation>Taste %1 %2</translation>
    </message>
    <message>
        <source>%1 x %2 y %3 pressure %4</source>
        <translation>%1 x %2 y %3 Druck %4</translation>
    </message>
    <message>
        <source>%1 x %2 y %3 %4 %5/s, longest gap %6 ms</source>
        <translation>%1 x %2 y %3 %4 %5/s, längste Lücke %6 ms</translation>
    </message>
    <message>
        <source>An object of JSON for each event, in a line of its own.</source>
        <translation>Für jedes Ereignis ein JSON-Objekt in einer eigenen Zeile.</translation>
    </message>
    <message>
        <source>End after this time; otherwise Ctrl-C ends.</source>
        <translation>Nach dieser Zeit beenden, sonst mit Strg-C.</translation>
    </message>
    <message>
        <source>Watching the pad %1. Ctrl-C ends.
</source>
        <translation>Das Pad %1 wird beobachtet. Strg-C beendet die Beobachtung.
</translation>
    </message>
    <message>
        <source>Try &apos;%1 --help&apos;.</source>
        <translation>Siehe „%1 --help“.</translation>
    </message>
    <message>
        <source>not enough memory</source>
        <translation>nicht genug Speicher</translation>
    </message>
    <message>
        <source>no command named</source>
        <translation>kein Befehl angegeben</translation>
    </message>
    <message>
        <source>a command comes first, not &apos;%1&apos;</source>
        <translation>zuerst kommt ein Befehl, nicht „%1“</translation>
    </message>
    <message>
        <source>there is no command &apos;%1&apos;</source>
        <translation>es gibt keinen Befehl „%1“</translation>
    </message>
    <message>
        <source>Commands:</source>
        <translation>Befehle:</translation>
    </message>
    <message>
        <source>The pad: %1; the pads&apos; own names, such as SCK210, too. Streams do not name it.</source>
        <translation>Das Pad: %1; auch die eigenen Namen der Pads, etwa SCK210. Tintenströme nennen es nicht.</translation>
    </message>
    <message>
        <source>Pad units in a millimetre, which neither streams nor pads tell.</source>
        <translation>Pad-Einheiten je Millimeter; weder Tintenströme noch Pads nennen sie.</translation>
    </message>
    <message>
        <source>a number of 0.1 to 10000</source>
        <translation>eine Zahl von 0.1 bis 10000</translation>
    </message>
    <message>
        <source>The compact form, in shares of the pad that --model names.</source>
        <translation>Die kompakte Form, in Anteilen des Pads, das --model nennt.</translation>
    </message>
    <message>
        <source>--model belongs to --compact</source>
        <translation>--model gehört zu --compact</translation>
    </message>
    <message>
        <source>Canvas in pixels; the whole writing area is on it. Default 800x400.</source>
        <translation>Leinwand in Pixeln; sie zeigt die ganze Schreibfläche. Vorgabe 800x400.</translation>
    </message>
    <message>
        <source>1 to 10, default 3; strokes follow it and the pressure.</source>
        <translation>Strichbreite, 1 bis 10, Vorgabe 3; der Druck verändert sie.</translation>
    </message>
    <message>
        <source>Ink as #rrggbb or by name, default black.</source>
        <translation>Tinte als #rrggbb oder als Name, Vorgabe black.</translation>
    </message>
    <message>
        <source>Resolution, 150 or 300, default 150.</source>
        <translation>Auflösung, 150 oder 300, Vorgabe 150.</translation>
    </message>
    <message>
        <source>A path a stroke, at 150 dots per inch, for a small file.</source>
        <translation>Je Strich ein Pfad, bei 150 dpi, für eine kleine Datei.</translation>
    </message>
    <message>
        <source>Resolution, %1 to %2, default 150. The canvas keeps the size on paper that it has at 150: at 300 there are twice as many pixels each way.</source>
        <translation>Auflösung, %1 bis %2, Vorgabe 150. Die Leinwand behält auf Papier die Größe, die sie bei 150 hat: Bei 300 sind es in jeder Richtung doppelt so viele Pixel.</translation>
    </message>
    <message>
        <source>Exit code 3 when nothing was signed.</source>
        <translation>Exit-Code 3, wenn nichts unterschrieben wurde.</translation>
    </message>
    <message>
        <source>A PNG picture instead of SVG.</source>
        <translation>Ein PNG-Bild statt SVG.</translation>
    </message>
    <message>
        <source>--compact does not go with --dpi %1</source>
        <translation>--compact geht nicht zusammen mit --dpi %1</translation>
    </message>
    <message>
        <source>a whole number of 30 to 2400</source>
        <translation>eine ganze Zahl von 30 bis 2400</translation>
    </message>
    <message>
        <source>--units-per-mm does not go with --compact</source>
        <translation>--units-per-mm geht nicht zusammen mit --compact</translation>
    </message>
    <message>
        <source>What the points are, from when, and whether something was signed.</source>
        <translation>Welche Punkte es sind, von wann und ob etwas unterschrieben wurde.</translation>
    </message>
    <message>
        <source>Position, pressure, speed and pen lifts over time: SVG or PNG.</source>
        <translation>Position, Druck, Geschwindigkeit und Absetzen des Stifts über der Zeit: SVG oder PNG.</translation>
    </message>
    <message>
        <source>The points as JSON.</source>
        <translation>Die Punkte als JSON.</translation>
    </message>
    <message>
        <source>The points as comma-separated values.</source>
        <translation>Die Punkte als kommagetrennte Werte.</translation>
    </message>
    <message>
        <source>The strokes as the library saves them: SVG.</source>
        <translation>Die Striche, wie die Bibliothek sie speichert: SVG.</translation>
    </message>
    <message>
        <source>The strokes as a picture of any resolution: PNG.</source>
        <translation>Die Striche als Bild in beliebiger Auflösung: PNG.</translation>
    </message>
    <message>
        <source>The strokes as vectors on a page of their canvas&apos;s size: PDF.</source>
        <translation>Die Striche als Vektoren auf einer Seite von der Größe ihrer Leinwand: PDF.</translation>
    </message>
    <message>
        <source>A recording that the simulated pad plays.</source>
        <translation>Eine Aufzeichnung, die das simulierte Pad abspielt.</translation>
    </message>
    <message>
        <source>The points in the Ink Markup Language of the W3C.</source>
        <translation>Die Punkte in der Ink Markup Language des W3C.</translation>
    </message>
    <message>
        <source>The points as signature time series of ISO/IEC 19794-7:2007.</source>
        <translation>Die Punkte als Unterschriften-Zeitreihe nach ISO/IEC 19794-7:2007.</translation>
    </message>
    <message>
        <source>The stream of what to-json wrote.</source>
        <translation>Der Tintenstrom zu dem, was to-json schrieb.</translation>
    </message>
    <message>
        <source>The stream of what to-csv wrote.</source>
        <translation>Der Tintenstrom zu dem, was to-csv schrieb.</translation>
    </message>
    <message>
        <source>The stream of a recording.</source>
        <translation>Der Tintenstrom einer Aufzeichnung.</translation>
    </message>
    <message>
        <source>The stream of a document in the Ink Markup Language.</source>
        <translation>Der Tintenstrom eines Dokuments in der Ink Markup Language.</translation>
    </message>
    <message>
        <source>The stream of signature time series of ISO/IEC 19794-7:2007.</source>
        <translation>Der Tintenstrom einer Unterschriften-Zeitreihe nach ISO/IEC 19794-7:2007.</translation>
    </message>
    <message>
        <source>Usage: scribera-ink COMMAND [options] [FILE]
Reads an ink packet stream, the Base64 text in which the library hands over the points of a signature, or with from-... writes one.

</source>
        <translation>Aufruf: scribera-ink BEFEHL [Optionen] [DATEI]
Liest einen Tintenstrom, den Base64-Text, in dem die Bibliothek die Punkte einer Unterschrift übergibt, oder schreibt mit from-... einen.

</translation>
    </message>
    <message>
        <source>FILE is a file, or - or nothing for standard input.
&apos;scribera-ink COMMAND --help&apos; tells the options; --version the version.
Exit code: 0 done, 1 malformed input or a file that cannot be read or written, 2 wrong usage.
</source>
        <translation>DATEI ist eine Datei; - oder nichts steht für die Standardeingabe.
„scribera-ink BEFEHL --help“ nennt die Optionen, --version die Version.
Exit-Code: 0 erledigt, 1 fehlerhafte Eingabe oder eine Datei, die sich nicht lesen oder schreiben lässt, 2 falscher Aufruf.
</translation>
    </message>
    <message>
        <source>File to write, default standard output.</source>
        <translation>Zieldatei, Vorgabe Standardausgabe.</translation>
    </message>
    <message>
        <source>File to read, default standard input.</source>
        <translation>Quelldatei, Vorgabe Standardeingabe.</translation>
    </message>
    <message>
        <source>more than one file</source>
        <translation>mehr als eine Datei</translation>
    </message>
    <message>
        <source>crashes: %1</source>
        <translation>stürzt ab: %1</translation>
    </message>
    <message>
        <source>no pipe: %1</source>
        <translation>keine Pipe: %1</translation>
    </message>
    <message>
        <source>no process: %1</source>
        <translation>kein Prozess: %1</translation>
    </message>
    <message>
        <source>%1 cannot be used</source>
        <translation>%1 ist nicht verwendbar</translation>
    </message>
    <message>
        <source>%1, version %2</source>
        <translation>%1, Version %2</translation>
    </message>
    <message>
        <source>library</source>
        <translation>Bibliothek</translation>
    </message>
    <message>
        <source>%1; this program is of version %2: install both from one release, and look for another copy in LD_LIBRARY_PATH</source>
        <translation>%1; dieses Programm hat Version %2: Installieren Sie beide aus derselben Veröffentlichung und suchen Sie in LD_LIBRARY_PATH nach einer weiteren Kopie</translation>
    </message>
    <message>
        <source>%1 cannot be entered: hosts find no driver in it</source>
        <translation>%1 lässt sich nicht betreten: Hosts finden darin keinen Treiber</translation>
    </message>
    <message>
        <source>driver</source>
        <translation>Treiber</translation>
    </message>
    <message>
        <source>%1; take the file that came with the pad</source>
        <translation>%1; nehmen Sie die Datei, die dem Pad beilag</translation>
    </message>
    <message>
        <source>%1; link the pad&apos;s driver there, or name one with --driver</source>
        <translation>%1; verlinken Sie den Treiber des Pads dorthin oder nennen Sie einen mit --driver</translation>
    </message>
    <message>
        <source>device</source>
        <translation>Gerät</translation>
    </message>
    <message>
        <source>%1 is made when a host switches logging on</source>
        <translation>%1 wird angelegt, wenn ein Host das Protokoll einschaltet</translation>
    </message>
    <message>
        <source>%1, %2 bytes</source>
        <translation>%1, %2 Bytes</translation>
    </message>
    <message>
        <source>windows</source>
        <translation>Fenster</translation>
    </message>
    <message>
        <source>%1: signatures are taken without a window only</source>
        <translation>%1: Unterschriften werden nur ohne Fenster aufgenommen</translation>
    </message>
    <message>
        <source>%1: correct or unset it</source>
        <translation>%1: Berichtigen oder löschen Sie die Variable</translation>
    </message>
    <message>
        <source>pad</source>
        <translation>Pad</translation>
    </message>
    <message>
        <source>%1; is it plugged in, and is --model right?</source>
        <translation>%1; ist es angeschlossen, und stimmt --model?</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>FIX</source>
        <translation>!!</translation>
    </message>
    <message>
        <source>log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>log of threads</source>
        <translation>Threadprotokoll</translation>
    </message>
    <message>
        <source>cannot be loaded: %1</source>
        <translation>lässt sich nicht laden: %1</translation>
    </message>
    <message>
        <source>is no driver of such a pad: it lacks %1</source>
        <translation>ist kein Treiber eines solchen Pads: Es fehlt %1</translation>
    </message>
    <message>
        <source>the driver cannot be put into a folder of its own: %1</source>
        <translation>der Treiber lässt sich nicht in einen eigenen Ordner legen: %1</translation>
    </message>
    <message>
        <source>pad:</source>
        <translation>Pad:</translation>
    </message>
    <message>
        <source>pen:</source>
        <translation>Stift:</translation>
    </message>
    <message>
        <source>version:</source>
        <translation>Version:</translation>
    </message>
    <message>
        <source>model:</source>
        <translation>Modell:</translation>
    </message>
    <message>
        <source>library:</source>
        <translation>Bibliothek:</translation>
    </message>
    <message>
        <source>writing area:</source>
        <translation>Schreibfläche:</translation>
    </message>
    <message>
        <source>keys:</source>
        <translation>Tasten:</translation>
    </message>
    <message>
        <source>driver:</source>
        <translation>Treiber:</translation>
    </message>
    <message>
        <source>none</source>
        <comment>device</comment>
        <translation>keine</translation>
    </message>
    <message>
        <source>yes: %1</source>
        <translation>ja: %1</translation>
    </message>
    <message>
        <source>no: %1</source>
        <translation>nein: %1</translation>
    </message>
    <message>
        <source>Input devices, and whether they can be signed on:</source>
        <translation>Eingabegeräte, und ob sich darauf unterschreiben lässt:</translation>
    </message>
    <message>
        <source>Drivers, and whether they can be used:</source>
        <translation>Treiber, und ob sie verwendbar sind:</translation>
    </message>
    <message>
        <source>Input devices and drivers that are there, and whether they can be used.</source>
        <translation>Vorhandene Eingabegeräte und Treiber, und ob sie verwendbar sind.</translation>
    </message>
    <message>
        <source>What the pad is: identity, versions, ranges, keys, used part of the device.</source>
        <translation>Was das Pad ist: Kennung, Versionen, Wertebereiche, Tasten, genutzter Teil des Geräts.</translation>
    </message>
    <message>
        <source>What comes from the pad, as it comes: samples, keys, report rate, gaps.</source>
        <translation>Was vom Pad kommt, sobald es kommt: Messwerte, Tasten, Abtastrate, Lücken.</translation>
    </message>
    <message>
        <source>Write what the pen does as a recording, which the simulated pad plays.</source>
        <translation>Schreibt als Aufzeichnung, was der Stift tut; das simulierte Pad spielt sie ab.</translation>
    </message>
    <message>
        <source>Take one signature and save it as files.</source>
        <translation>Nimmt eine Unterschrift auf und speichert sie in Dateien.</translation>
    </message>
    <message>
        <source>Look through everything that a signature needs, and say what to do.</source>
        <translation>Prüft alles, was eine Unterschrift braucht, und sagt, was zu tun ist.</translation>
    </message>
    <message>
        <source>&apos;scribera-pad COMMAND --help&apos; tells the options; --version the version.
Exit code: 0 done, 1 failure, 2 wrong usage, 3 cancelled, 4 nobody confirmed in time, 5 nothing to write. Ctrl-C drops what was begun and ends by the signal; it is the regular end of &apos;watch&apos;.
</source>
        <translation>„scribera-pad BEFEHL --help“ nennt die Optionen, --version die Version.
Exit-Code: 0 erledigt, 1 Fehler, 2 falscher Aufruf, 3 abgebrochen, 4 niemand hat rechtzeitig bestätigt, 5 nichts zu schreiben. Strg-C verwirft Begonnenes und endet durch das Signal; „watch“ endet so regulär.
</translation>
    </message>
    <message>
        <source>unexpected: %1</source>
        <translation>unerwartet: %1</translation>
    </message>
    <message>
        <source>%1, %2, a %3</source>
        <translation>%1, %2, Typ %3</translation>
    </message>
    <message>
        <source>%1, %2 units/mm</source>
        <translation>%1, %2 Einheiten/mm</translation>
    </message>
    <message>
        <source>none</source>
        <comment>button</comment>
        <translation>keine</translation>
    </message>
    <message>
        <source>%1 of this device</source>
        <translation>%1 dieses Geräts</translation>
    </message>
    <message>
        <source>%1, which this device does not have</source>
        <translation>%1, die dieses Gerät nicht hat</translation>
    </message>
    <message>
        <source>%1 of another device</source>
        <translation>%1 eines anderen Geräts</translation>
    </message>
    <message>
        <source>device:</source>
        <translation>Gerät:</translation>
    </message>
    <message>
        <source>its x axis:</source>
        <translation>x-Achse:</translation>
    </message>
    <message>
        <source>its y axis:</source>
        <translation>y-Achse:</translation>
    </message>
    <message>
        <source>its pressure:</source>
        <translation>Druck:</translation>
    </message>
    <message>
        <source>confirm key:</source>
        <translation>Bestätigen:</translation>
    </message>
    <message>
        <source>cancel key:</source>
        <translation>Abbrechen:</translation>
    </message>
    <message>
        <source>used:</source>
        <translation>genutzt:</translation>
    </message>
    <message>
        <source>Recording the pad %1; its confirm key ends. So does Enter; Escape drops the recording.
</source>
        <translation>Das Pad %1 wird aufgezeichnet. Seine Bestätigungstaste oder die Eingabetaste beendet die Aufzeichnung; Esc verwirft sie.
</translation>
    </message>
    <message>
        <source>Recording the pad %1; its confirm key ends.
</source>
        <translation>Das Pad %1 wird aufgezeichnet. Seine Bestätigungstaste beendet die Aufzeichnung.
</translation>
    </message>
    <message>
        <source>%1, %2, %3 seconds</source>
        <comment>points, strokes</comment>
        <translation>%1, %2, %3 Sekunden</translation>
    </message>
    <message>
        <source>no pad %1: %2</source>
        <translation>kein Pad %1: %2</translation>
    </message>
    <message>
        <source>Resolution, 150 or 300, default 300.</source>
        <translation>Auflösung, 150 oder 300, Vorgabe 300.</translation>
    </message>
    <message>
        <source>no window can be shown: %1</source>
        <translation>es lässt sich kein Fenster zeigen: %1</translation>
    </message>
    <message>
        <source>%1: %2, %3, %4 seconds</source>
        <comment>pad, points, strokes</comment>
        <translation>%1: %2, %3, %4 Sekunden</translation>
    </message>
    <message>
        <source>%1: cannot be made: is the disk full, or the picture too large?</source>
        <translation>%1: lässt sich nicht erzeugen: Ist der Datenträger voll oder das Bild zu groß?</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Bestätigen</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>%1, %2, %3 s</source>
        <comment>strokes, points, seconds</comment>
        <translation>%1, %2, %3 s</translation>
    </message>
    <message numerus="yes">
        <source>%n points</source>
        <translation>
            <numerusform>%n Punkt</numerusform>
            <numerusform>%n Punkte</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n strokes</source>
        <translation>
            <numerusform>%n Strich</numerusform>
            <numerusform>%n Striche</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 s, %2, %3</source>
        <comment>seconds, points, strokes</comment>
        <translation>%1 s, %2, %3</translation>
    </message>
    <message>
        <source>%1 s, %2, %3; the pad does not answer</source>
        <comment>seconds, points, strokes</comment>
        <translation>%1 s, %2, %3; das Pad antwortet nicht</translation>
    </message>
    <message>
        <source>. the device   - used   1 the pad&apos;s upper left corner   2 its upper right one</source>
        <translation>. das Gerät   - genutzt   1 obere linke Ecke des Pads   2 obere rechte</translation>
    </message>
    <message>
        <source>Please sign on the pad %1, then touch its confirm key. Or press Enter here; Escape cancels.
</source>
        <translation>Bitte unterschreiben Sie auf dem Pad %1 und berühren Sie dann seine Bestätigungstaste. Oder drücken Sie hier die Eingabetaste; Esc bricht ab.
</translation>
    </message>
    <message>
        <source>Please sign on the pad %1, then touch its confirm key.
</source>
        <translation>Bitte unterschreiben Sie auf dem Pad %1 und berühren Sie dann seine Bestätigungstaste.
</translation>
    </message>
    <message>
        <source>%1: cannot be written: %2</source>
        <translation>%1: lässt sich nicht schreiben: %2</translation>
    </message>
    <message>
        <source>there is no folder %1</source>
        <translation>es gibt keinen Ordner %1</translation>
    </message>
    <message>
        <source>1 to 86400 seconds</source>
        <translation>1 bis 86400 Sekunden</translation>
    </message>
    <message>
        <source>down</source>
        <translation>setzt auf</translation>
    </message>
    <message>
        <source>move</source>
        <translation>schreibt</translation>
    </message>
    <message>
        <source>up</source>
        <translation>hebt ab</translation>
    </message>
    <message>
        <source>touched</source>
        <translation>berührt</translation>
    </message>
    <message>
        <source>used</source>
        <translation>betätigt</translation>
    </message>
    <message>
        <source>confirm</source>
        <translation>„Bestätigen“</translation>
    </message>
    <message>
        <source>cancel</source>
        <translation>„Abbrechen“</translation>
    </message>
    <message>
        <source>standard output</source>
        <translation>Standardausgabe</translation>
    </message>
    <message>
        <source>gap %1 ms</source>
        <translation>Lücke %1 ms</translation>
    </message>
    <message>
        <source>the pad answers again</source>
        <translation>das Pad antwortet wieder</translation>
    </message>
    <message>
        <source>the pad does not answer</source>
        <translation>das Pad antwortet nicht</translation>
    </message>
    <message>
        <source>%1 s, %2, %3, %4 points/s, longest gap %5 ms</source>
        <comment>seconds, points, strokes</comment>
        <translation>%1 s, %2, %3, %4 Punkte/s, längste Lücke %5 ms</translation>
    </message>
    <message>
        <source>no</source>
        <comment>points/s</comment>
        <translation>keine</translation>
    </message>
    <message>
        <source>a width in points</source>
        <translation>eine Breite in Punkt</translation>
    </message>
    <message>
        <source>the number of a page</source>
        <translation>die Nummer einer Seite</translation>
    </message>
    <message>
        <source>X,Y in points from the page&apos;s upper left corner</source>
        <translation>X,Y in Punkt ab der oberen linken Ecke der Seite</translation>
    </message>
    <message>
        <source>of name, date and reason, separated by commas</source>
        <translation>eine Auswahl aus name, date und reason, durch Kommas getrennt</translation>
    </message>
    <message>
        <source>The pad answers again.
</source>
        <translation>Das Pad antwortet wieder.
</translation>
    </message>
    <message>
        <source>The pad does not answer.
</source>
        <translation>Das Pad antwortet nicht.
</translation>
    </message>
    <message>
        <source>the pad does not answer any more; nothing is saved</source>
        <translation>das Pad antwortet nicht mehr; es wird nichts gespeichert</translation>
    </message>
    <message>
        <source>Put a signature into a PDF document.</source>
        <translation>Setzt eine Unterschrift in ein PDF-Dokument.</translation>
    </message>
    <message>
        <source>The document&apos;s signature fields: pages, places, whether they are signed.</source>
        <translation>Die Unterschriftsfelder des Dokuments: Seiten, Orte, ob sie unterschrieben sind.</translation>
    </message>
    <message>
        <source>What each signature covers, who made it, and whether it is valid.</source>
        <translation>Was jede Signatur umfasst, von wem sie ist und ob sie gültig ist.</translation>
    </message>
    <message>
        <source>Write the ink that was sealed for the holder of a key.</source>
        <translation>Schreibt die Tinte, die für den Inhaber eines Schlüssels versiegelt wurde.</translation>
    </message>
    <message>
        <source>Usage: scribera-sign DOCUMENT -o FILE [options]
       scribera-sign COMMAND [options] DOCUMENT
Puts a handwritten signature into a PDF document and seals it with a certificate.

</source>
        <translation>Aufruf: scribera-sign DOKUMENT -o DATEI [Optionen]
        scribera-sign BEFEHL [Optionen] DOKUMENT
Setzt eine handschriftliche Unterschrift in ein PDF-Dokument und versiegelt es mit einem Zertifikat.

</translation>
    </message>
    <message>
        <source>&apos;scribera-sign COMMAND --help&apos; tells its options; --version the version.
Exit code: 0 done, 1 failure, 2 wrong usage, 3 cancelled, 4 nobody confirmed in time, 5 nothing written on the pad. Ctrl-C drops what was begun and ends by the signal.
</source>
        <translation>„scribera-sign BEFEHL --help“ nennt dessen Optionen, --version die Version.
Exit-Code: 0 erledigt, 1 Fehler, 2 falscher Aufruf, 3 abgebrochen, 4 niemand hat rechtzeitig bestätigt, 5 nichts auf dem Pad geschrieben. Strg-C verwirft Begonnenes und endet durch das Signal.
</translation>
    </message>
    <message>
        <source>PDF document.</source>
        <translation>PDF-Dokument.</translation>
    </message>
    <message>
        <source>no document named</source>
        <translation>kein Dokument angegeben</translation>
    </message>
    <message>
        <source>cannot be used: %1</source>
        <translation>nicht verwendbar: %1</translation>
    </message>
    <message>
        <source>it is no regular file</source>
        <translation>es ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>%1 is read, and stays as it is</source>
        <translation>%1 wird gelesen und bleibt, wie es ist</translation>
    </message>
    <message>
        <source>one of --at, --after and --field says where the signature goes</source>
        <translation>genau eines von --at, --after und --field sagt, wohin die Unterschrift kommt</translation>
    </message>
    <message>
        <source>--field is a field&apos;s name, and has its own page and width</source>
        <translation>--field ist der Name eines Feldes, das seine eigene Seite und Breite hat</translation>
    </message>
    <message>
        <source>--after is empty</source>
        <translation>--after ist leer</translation>
    </message>
    <message>
        <source>--password-file is of --certificate</source>
        <translation>--password-file gehört zu --certificate</translation>
    </message>
    <message>
        <source>--show %1 needs --%1</source>
        <translation>--show %1 braucht --%1</translation>
    </message>
    <message>
        <source>one of --pad and --ink says where the ink comes from</source>
        <translation>genau eines von --pad und --ink sagt, woher die Tinte kommt</translation>
    </message>
    <message>
        <source>--%1 is of --pad</source>
        <translation>--%1 gehört zu --pad</translation>
    </message>
    <message>
        <source>--model is of --ink; --pad names the pad itself</source>
        <translation>--model gehört zu --ink; --pad nennt das Pad selbst</translation>
    </message>
    <message>
        <source>File whose first line opens the document.</source>
        <translation>Datei, deren erste Zeile das Dokument öffnet.</translation>
    </message>
    <message>
        <source>The signed document.</source>
        <translation>Das unterschriebene Dokument.</translation>
    </message>
    <message>
        <source>From 1. Default 1 with --at, all with --after.</source>
        <translation>Ab 1. Vorgabe 1 mit --at, alle mit --after.</translation>
    </message>
    <message>
        <source>Upper left corner of the signature, in points from that of the page.</source>
        <translation>Obere linke Ecke der Unterschrift, in Punkt, gemessen ab der oberen linken Ecke der Seite.</translation>
    </message>
    <message>
        <source>Room for the ink in points, default 180. What is written on all of the pad fills it.</source>
        <translation>Platz für die Tinte in Punkt, Vorgabe 180. Was das ganze Pad füllt, füllt auch ihn.</translation>
    </message>
    <message>
        <source>Text after which the signature stands, on its line. It must be there once.</source>
        <translation>Text, hinter dem die Unterschrift steht, auf seiner Zeile. Er muss genau einmal vorkommen.</translation>
    </message>
    <message>
        <source>Signature field that is filled.</source>
        <translation>Unterschriftsfeld, das gefüllt wird.</translation>
    </message>
    <message>
        <source>Sign now, on this pad.</source>
        <translation>Jetzt auf diesem Pad unterschreiben.</translation>
    </message>
    <message>
        <source>Wait no longer than this for the signature.</source>
        <translation>Nicht länger als diese Zeit auf die Unterschrift warten.</translation>
    </message>
    <message>
        <source>Ink packet stream to draw; - is standard input.</source>
        <translation>Zu zeichnender Tintenstrom; - ist die Standardeingabe.</translation>
    </message>
    <message>
        <source>The pad that --ink is from, default K210.</source>
        <translation>Das Pad, von dem --ink stammt, Vorgabe K210.</translation>
    </message>
    <message>
        <source>Lines below the ink: name, date, reason, separated by commas.</source>
        <translation>Zeilen unter der Tinte: name, date, reason, durch Kommas getrennt.</translation>
    </message>
    <message>
        <source>PKCS#12 file whose key seals the document. Without one it is only marked.</source>
        <translation>PKCS#12-Datei, deren Schlüssel das Dokument versiegelt. Ohne sie wird es nur markiert.</translation>
    </message>
    <message>
        <source>File whose first line opens the certificate&apos;s.</source>
        <translation>Datei, deren erste Zeile die des Zertifikats öffnet.</translation>
    </message>
    <message>
        <source>Who signs, default what the certificate says.</source>
        <translation>Wer unterschreibt, Vorgabe wie im Zertifikat.</translation>
    </message>
    <message>
        <source>Why.</source>
        <translation>Warum.</translation>
    </message>
    <message>
        <source>Where.</source>
        <translation>Wo.</translation>
    </message>
    <message>
        <source>Certificate in PEM whose key alone shall read the ink in the document.</source>
        <translation>Zertifikat im PEM-Format; nur mit seinem Schlüssel soll sich die Tinte im Dokument lesen lassen.</translation>
    </message>
    <message>
        <source>%1: page %2, field %3, sealed by %4</source>
        <translation>%1: Seite %2, Feld %3, versiegelt von %4</translation>
    </message>
    <message>
        <source>%1: page %2, marked. This is no seal: without --certificate nothing shows later changes. The signatures in the document do not cover it.</source>
        <translation>%1: Seite %2, markiert. Das ist kein Siegel: Ohne --certificate zeigt nichts spätere Änderungen an. Die Signaturen im Dokument umfassen die Markierung nicht.</translation>
    </message>
    <message>
        <source>%1: page %2, marked. This is no seal: without --certificate nothing shows later changes.</source>
        <translation>%1: Seite %2, markiert. Das ist kein Siegel: Ohne --certificate zeigt nichts spätere Änderungen an.</translation>
    </message>
    <message>
        <source>the ink of a mark. Nobody signed it: anybody may have put it there</source>
        <translation>die Tinte einer Markierung. Niemand hat sie signiert: Jeder kann sie dort angebracht haben</translation>
    </message>
    <message>
        <source>the ink of the field %1, signed by %2; the signature is valid</source>
        <translation>die Tinte des Feldes %1, signiert von %2; die Signatur ist gültig</translation>
    </message>
    <message>
        <source>the ink of the field %1, signed by %2; the signature is valid, and the document was changed afterwards</source>
        <translation>die Tinte des Feldes %1, signiert von %2; die Signatur ist gültig, und das Dokument wurde danach geändert</translation>
    </message>
    <message>
        <source>Private key in PEM, of the certificate that the ink was sealed for.</source>
        <translation>Privater Schlüssel im PEM-Format zu dem Zertifikat, für das die Tinte versiegelt wurde.</translation>
    </message>
    <message>
        <source>File whose first line is the password of the key.</source>
        <translation>Datei, deren erste Zeile das Passwort des Schlüssels ist.</translation>
    </message>
    <message>
        <source>File for the ink.</source>
        <translation>Datei für die Tinte.</translation>
    </message>
    <message>
        <source>Of several signatures with sealed ink, the one of this field.</source>
        <translation>Von mehreren Signaturen mit versiegelter Tinte die dieses Feldes.</translation>
    </message>
    <message>
        <source>--%1 is missing</source>
        <translation>--%1 fehlt</translation>
    </message>
    <message>
        <source>it has no signature</source>
        <translation>es hat keine Signatur</translation>
    </message>
    <message>
        <source>signature %1 is not valid</source>
        <translation>die Signatur %1 ist nicht gültig</translation>
    </message>
    <message>
        <source>signature %1 is not trusted</source>
        <translation>der Signatur %1 wird nicht vertraut</translation>
    </message>
    <message numerus="yes">
        <source>%n bytes were appended after the last signature</source>
        <translation>
            <numerusform>%n Byte wurde nach der letzten Signatur angehängt</numerusform>
            <numerusform>%n Bytes wurden nach der letzten Signatur angehängt</numerusform>
        </translation>
    </message>
    <message>
        <source>the whole file</source>
        <translation>die ganze Datei</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>revision %1, the first %2 of %3 bytes</source>
        <translation>Fassung %1, die ersten %2 von %3 Bytes</translation>
    </message>
    <message>
        <source>Signature %1, page %2</source>
        <translation>Signatur %1, Seite %2</translation>
    </message>
    <message>
        <source>Signature %1, on no page</source>
        <translation>Signatur %1, auf keiner Seite</translation>
    </message>
    <message>
        <source>result:</source>
        <translation>Ergebnis:</translation>
    </message>
    <message>
        <source>valid</source>
        <translation>gültig</translation>
    </message>
    <message>
        <source>NOT VALID: %1</source>
        <translation>NICHT GÜLTIG: %1</translation>
    </message>
    <message>
        <source>covers:</source>
        <translation>umfasst:</translation>
    </message>
    <message>
        <source>later:</source>
        <translation>später:</translation>
    </message>
    <message>
        <source>what it allows to be changed</source>
        <translation>Änderungen, die sie erlaubt</translation>
    </message>
    <message>
        <source>any changes; it does not limit them</source>
        <translation>beliebige Änderungen; sie beschränkt sie nicht</translation>
    </message>
    <message>
        <source>signer:</source>
        <translation>signiert von:</translation>
    </message>
    <message>
        <source>issuer:</source>
        <translation>Aussteller:</translation>
    </message>
    <message>
        <source>serial:</source>
        <translation>Seriennr.:</translation>
    </message>
    <message>
        <source>trust:</source>
        <translation>Vertrauen:</translation>
    </message>
    <message>
        <source>trusted</source>
        <translation>vertraut</translation>
    </message>
    <message>
        <source>NOT TRUSTED: %1</source>
        <translation>NICHT VERTRAUT: %1</translation>
    </message>
    <message>
        <source>not checked</source>
        <translation>nicht geprüft</translation>
    </message>
    <message>
        <source>time:</source>
        <translation>Zeit:</translation>
    </message>
    <message>
        <source>name:</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>reason:</source>
        <translation>Grund:</translation>
    </message>
    <message>
        <source>location:</source>
        <translation>Ort:</translation>
    </message>
    <message>
        <source>THE DOCUMENT IS NOT SIGNED.</source>
        <translation>DAS DOKUMENT IST NICHT SIGNIERT.</translation>
    </message>
    <message>
        <source>The document is as it was signed.</source>
        <translation>Das Dokument ist so, wie es signiert wurde.</translation>
    </message>
    <message>
        <source>THE DOCUMENT IS NOT AS IT WAS SIGNED: %1.</source>
        <translation>DAS DOKUMENT IST NICHT SO, WIE ES SIGNIERT WURDE: %1.</translation>
    </message>
    <message>
        <source>Certificates in PEM to trust: a signer&apos;s must come from one of them, or be one.</source>
        <translation>Zertifikate im PEM-Format, denen vertraut wird: Das einer Signatur muss von einem davon stammen oder selbst eines davon sein.</translation>
    </message>
    <message>
        <source>For programs.</source>
        <translation>Ausgabe als JSON, für Programme.</translation>
    </message>
    <message>
        <source>channel %1 is in %2; --units-per-mm has to tell how many pad units are in a millimetre</source>
        <translation>Kanal %1 ist in %2; --units-per-mm muss angeben, wie viele Pad-Einheiten ein Millimeter hat</translation>
    </message>
    <message>
        <source>channel %1 tells no length; without --units-per-mm its values are taken as pad units</source>
        <translation>Kanal %1 nennt keine Länge; ohne --units-per-mm gelten seine Werte als Pad-Einheiten</translation>
    </message>
    <message>
        <source>FILE</source>
        <translation>DATEI</translation>
    </message>
    <message>
        <source>file</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>seconds</source>
        <translation>Sekunden</translation>
    </message>
    <message>
        <source>WxH</source>
        <translation>BxH</translation>
    </message>
    <message>
        <source>width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>colour</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>dpi</source>
        <translation>dpi</translation>
    </message>
    <message>
        <source>model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>number</source>
        <translation>Zahl</translation>
    </message>
    <message>
        <source>color</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>document</source>
        <translation>Dokument</translation>
    </message>
    <message>
        <source>DOCUMENT</source>
        <translation>DOKUMENT</translation>
    </message>
    <message>
        <source>points</source>
        <comment>a width</comment>
        <translation>Punkt</translation>
    </message>
    <message>
        <source>text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>lines</source>
        <translation>Zeilen</translation>
    </message>
</context>
<context>
    <name>VirtualPad</name>
    <message>
        <source>be this pad, whatever device type a host asks for; one of %1, also without SC. Without it, an SCK210 that turns into what a host asks for</source>
        <translation>dieses Pad sein, welchen Gerätetyp ein Host auch verlangt; eines von %1, auch ohne SC. Ohne diese Option ein SCK210, das zu dem wird, was ein Host verlangt</translation>
    </message>
    <message>
        <source>wait for hosts at this path; default is where the driver looks with SCRIBERA_SIM_PAD=default</source>
        <translation>unter diesem Pfad auf Hosts warten; Vorgabe ist, wo der Treiber mit SCRIBERA_SIM_PAD=default sucht</translation>
    </message>
    <message>
        <source>play this recording for each host that has opened the pad</source>
        <translation>diese Aufzeichnung jedem Host vorspielen, der das Pad geöffnet hat</translation>
    </message>
    <message>
        <source>play it again and again</source>
        <translation>sie immer wieder abspielen</translation>
    </message>
    <message>
        <source>put this finger on the sensor after that: loop, whorl, arch or a grey PGM picture</source>
        <translation>danach diesen Finger auf den Sensor legen: loop, whorl, arch oder ein PGM-Graustufenbild</translation>
    </message>
    <message>
        <source>place of the window on the screen</source>
        <translation>Ort des Fensters auf dem Bildschirm</translation>
    </message>
    <message>
        <source>size of the window</source>
        <translation>Größe des Fensters</translation>
    </message>
    <message>
        <source>save a picture of the window and quit; with --replay, play at once and save it afterwards</source>
        <translation>ein Bild des Fensters speichern und das Programm beenden; mit --replay sofort abspielen und danach speichern</translation>
    </message>
    <message>
        <source>show this text</source>
        <translation>diesen Text anzeigen</translation>
    </message>
    <message>
        <source>show the version</source>
        <translation>die Version anzeigen</translation>
    </message>
    <message>
        <source>unexpected argument &apos;%1&apos;</source>
        <translation>unerwartetes Argument „%1“</translation>
    </message>
    <message>
        <source>--%1 is given twice</source>
        <translation>--%1 ist doppelt angegeben</translation>
    </message>
    <message>
        <source>--%1 needs a value</source>
        <translation>--%1 braucht einen Wert</translation>
    </message>
    <message>
        <source>there is no model &apos;%1&apos;, only %2</source>
        <translation>es gibt kein Modell „%1“, nur %2</translation>
    </message>
    <message>
        <source>the %1 has no fingerprint sensor</source>
        <translation>das %1 hat keinen Fingerabdrucksensor</translation>
    </message>
    <message>
        <source>--loop needs --replay</source>
        <translation>--loop braucht --replay</translation>
    </message>
    <message>
        <source>--screenshot comes after a replay, which with --loop never ends</source>
        <translation>--screenshot folgt auf das Abspielen, das mit --loop nie endet</translation>
    </message>
    <message>
        <source>the position &apos;%1&apos; is not X,Y</source>
        <translation>der Ort „%1“ ist nicht X,Y</translation>
    </message>
    <message>
        <source>the size &apos;%1&apos; is not WxH</source>
        <translation>die Größe „%1“ ist nicht BxH</translation>
    </message>
    <message>
        <source>A signature pad in a window. The simulated driver finds it when its host has
SCRIBERA_SIM_PAD=default or =PATH in the environment; either may be started first.</source>
        <translation>Ein Unterschriftenpad in einem Fenster. Der simulierte Treiber findet es, wenn sein Host
SCRIBERA_SIM_PAD=default oder =PFAD in der Umgebung hat; ob Pad oder Host zuerst
gestartet wird, ist gleichgültig.</translation>
    </message>
    <message>
        <source>Qt&apos;s own options are understood too, such as -platform and -style.
Exit code: 0 done, 1 failure, 2 wrong arguments.
</source>
        <translation>Auch die Optionen von Qt werden verstanden, etwa -platform und -style.
Exit-Code: 0 erledigt, 1 Fehler, 2 falsche Argumente.
</translation>
    </message>
    <message>
        <source>MODEL</source>
        <translation>MODELL</translation>
    </message>
    <message>
        <source>PATH</source>
        <translation>PFAD</translation>
    </message>
    <message>
        <source>FILE</source>
        <translation>DATEI</translation>
    </message>
    <message>
        <source>PATTERN|FILE</source>
        <translation>MUSTER|DATEI</translation>
    </message>
    <message>
        <source>WxH</source>
        <translation>BxH</translation>
    </message>
</context>
<context>
    <name>virtualpad::FingerDialog</name>
    <message>
        <source>Put the finger on</source>
        <translation>Finger auflegen</translation>
    </message>
    <message>
        <source>Fingerprint</source>
        <translation>Fingerabdruck</translation>
    </message>
    <message>
        <source>&amp;Loop</source>
        <translation>&amp;Schleife</translation>
    </message>
    <message>
        <source>&amp;Whorl</source>
        <translation>&amp;Wirbel</translation>
    </message>
    <message>
        <source>&amp;Arch</source>
        <translation>B&amp;ogen</translation>
    </message>
    <message>
        <source>&amp;Picture file</source>
        <translation>&amp;Bilddatei</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Durchsuchen …</translation>
    </message>
    <message>
        <source>Grey PGM picture</source>
        <translation>PGM-Graustufenbild</translation>
    </message>
    <message>
        <source>Picture file</source>
        <translation>Bilddatei</translation>
    </message>
    <message>
        <source>&amp;Score</source>
        <translation>&amp;Güte</translation>
    </message>
    <message>
        <source>Score of the fingerprint</source>
        <translation>Güte des Fingerabdrucks</translation>
    </message>
    <message>
        <source>How good the sensor takes the fingerprint to be</source>
        <translation>Für wie gut der Sensor den Fingerabdruck hält</translation>
    </message>
    <message>
        <source>Preview of the fingerprint</source>
        <translation>Vorschau des Fingerabdrucks</translation>
    </message>
    <message>
        <source>Picture of a fingerprint</source>
        <translation>Bild eines Fingerabdrucks</translation>
    </message>
    <message>
        <source>Grey pictures (*.pgm);;All files (*)</source>
        <translation>Graustufenbilder (*.pgm);;Alle Dateien (*)</translation>
    </message>
</context>
<context>
    <name>virtualpad::MainWindow</name>
    <message>
        <source>Scribera virtual pad</source>
        <translation>Virtuelles Pad von Scribera</translation>
    </message>
    <message>
        <source>&amp;Pad</source>
        <translation>&amp;Pad</translation>
    </message>
    <message>
        <source>&amp;Model</source>
        <translation>&amp;Modell</translation>
    </message>
    <message>
        <source>&amp;Keep this model</source>
        <translation>Modell &amp;beibehalten</translation>
    </message>
    <message>
        <source>Stay this model also when a host asks for another device type</source>
        <translation>Dieses Modell bleiben, auch wenn ein Host einen anderen Gerätetyp verlangt</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>B&amp;eenden</translation>
    </message>
    <message>
        <source>P&amp;en</source>
        <translation>&amp;Stift</translation>
    </message>
    <message>
        <source>Play a recorded signature on the pad (Ctrl+O)</source>
        <translation>Eine aufgezeichnete Unterschrift auf dem Pad abspielen (Strg+O)</translation>
    </message>
    <message>
        <source>Replay again and &amp;again</source>
        <translation>Immer wieder a&amp;bspielen</translation>
    </message>
    <message>
        <source>Re&amp;cord</source>
        <translation>Auf&amp;zeichnen</translation>
    </message>
    <message>
        <source>Record what the pen does, and save it in the end (Ctrl+R)</source>
        <translation>Aufzeichnen, was der Stift tut, und am Ende speichern (Strg+R)</translation>
    </message>
    <message>
        <source>&amp;Fingerprint…</source>
        <translation>&amp;Fingerabdruck …</translation>
    </message>
    <message>
        <source>Put a finger on the sensor of the SCK421B (F)</source>
        <translation>Einen Finger auf den Sensor des SCK421B legen (F)</translation>
    </message>
    <message>
        <source>Connected host</source>
        <translation>Verbundener Host</translation>
    </message>
    <message>
        <source>Report rate</source>
        <translation>Abtastrate</translation>
    </message>
    <message>
        <source>Samples sent</source>
        <translation>Gesendete Messwerte</translation>
    </message>
    <message>
        <source>Samples a second, as measured in the last stroke</source>
        <translation>Messwerte je Sekunde, gemessen beim letzten Strich</translation>
    </message>
    <message>
        <source>Samples that this host was sent</source>
        <translation>Messwerte, die dieser Host erhalten hat</translation>
    </message>
    <message>
        <source>Replay a recording</source>
        <translation>Eine Aufzeichnung abspielen</translation>
    </message>
    <message>
        <source>Recordings and ink (*.rec *.txt *.ink);;All files (*)</source>
        <translation>Aufzeichnungen und Tinte (*.rec *.txt *.ink);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Replay</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Nothing was recorded</source>
        <translation>Es wurde nichts aufgezeichnet</translation>
    </message>
    <message>
        <source>Save the recording</source>
        <translation>Die Aufzeichnung speichern</translation>
    </message>
    <message>
        <source>Recordings (*.rec)</source>
        <translation>Aufzeichnungen (*.rec)</translation>
    </message>
    <message numerus="yes">
        <source>Saved %n samples in %1</source>
        <translation>
            <numerusform>%n Messwert in %1 gespeichert</numerusform>
            <numerusform>%n Messwerte in %1 gespeichert</numerusform>
        </translation>
    </message>
    <message>
        <source>The fingerprint was sent</source>
        <translation>Der Fingerabdruck wurde gesendet</translation>
    </message>
    <message>
        <source>%1 – Scribera virtual pad</source>
        <translation>%1 – Virtuelles Pad von Scribera</translation>
    </message>
    <message>
        <source>Stop &amp;replay</source>
        <translation>Abspielen be&amp;enden</translation>
    </message>
    <message>
        <source>&amp;Replay…</source>
        <translation>&amp;Abspielen …</translation>
    </message>
    <message>
        <source>Stop and &amp;save…</source>
        <translation>Beenden und spei&amp;chern …</translation>
    </message>
    <message>
        <source>No host</source>
        <translation>Kein Host</translation>
    </message>
    <message>
        <source>Host for device type %1 connected; %2 is none, so it refuses the pad</source>
        <translation>Host für Gerätetyp %1 verbunden; %2 ist ein anderer, deshalb lehnt er das Pad ab</translation>
    </message>
    <message>
        <source>Host connected, device type %1</source>
        <translation>Host verbunden, Gerätetyp %1</translation>
    </message>
    <message>
        <source>%1 samples/s</source>
        <translation>%1 Messwerte/s</translation>
    </message>
    <message>
        <source>%1 sent</source>
        <translation>%1 gesendet</translation>
    </message>
</context>
<context>
    <name>virtualpad::PadServer</name>
    <message>
        <source>it did not introduce itself</source>
        <translation>er hat sich nicht angemeldet</translation>
    </message>
    <message>
        <source>it does not read</source>
        <translation>er liest nicht</translation>
    </message>
</context>
<context>
    <name>virtualpad::PadView</name>
    <message>
        <source>Pad</source>
        <translation>Pad</translation>
    </message>
    <message>
        <source>Writing area with a cancel key and a confirm key</source>
        <translation>Schreibfläche mit einer Abbruchtaste und einer Bestätigungstaste</translation>
    </message>
    <message>
        <source>Cancel key (Escape)</source>
        <translation>Abbruchtaste (Esc)</translation>
    </message>
    <message>
        <source>Confirm key (Enter)</source>
        <translation>Bestätigungstaste (Eingabe)</translation>
    </message>
    <message>
        <source>Fingerprint sensor (F)</source>
        <translation>Fingerabdrucksensor (F)</translation>
    </message>
    <message>
        <source>No host is connected.
Try the pen.</source>
        <translation>Kein Host ist verbunden.
Probieren Sie den Stift aus.</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
</context>
<context>
    <name>virtualpad::VirtualPad</name>
    <message>
        <source>The host is for device type %1, so the pad is %2 now</source>
        <translation>Der Host ist für Gerätetyp %1, deshalb ist das Pad jetzt ein %2</translation>
    </message>
    <message>
        <source>The host was disconnected: %1</source>
        <translation>Der Host wurde getrennt: %1</translation>
    </message>
</context>
</TS>
