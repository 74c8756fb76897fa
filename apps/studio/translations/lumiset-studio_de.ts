<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Export</name>
    <message>
        <source>MP4, H.264</source>
        <translation>MP4, H.264</translation>
    </message>
    <message>
        <source>QuickTime, ProRes</source>
        <translation>QuickTime, ProRes</translation>
    </message>
    <message>
        <source>Matroska, FFV1 (lossless)</source>
        <translation>Matroska, FFV1 (verlustfrei)</translation>
    </message>
    <message>
        <source>Matroska, H.264</source>
        <translation>Matroska, H.264</translation>
    </message>
    <message>
        <source>WebM, VP9</source>
        <translation>WebM, VP9</translation>
    </message>
    <message>
        <source>PNG</source>
        <translation>PNG</translation>
    </message>
    <message>
        <source>JPEG</source>
        <translation>JPEG</translation>
    </message>
    <message>
        <source>TIFF</source>
        <translation>TIFF</translation>
    </message>
    <message>
        <source>High</source>
        <translation>Hoch</translation>
    </message>
    <message>
        <source>Nearly lossless</source>
        <translation>Fast verlustfrei</translation>
    </message>
    <message>
        <source>Small file</source>
        <translation>Kleine Datei</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>off</source>
        <translation>aus</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::CurveView</name>
    <message>
        <source>Values over time</source>
        <translation>Werte über die Zeit</translation>
    </message>
    <message>
        <source>Click a diamond in the panel to set a key</source>
        <translation>Eine Raute im Bedienfeld setzt einen Schlüssel</translation>
    </message>
    <message>
        <source>: no keys</source>
        <translation>: keine Schlüssel</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::Document</name>
    <message>
        <source>Add %1</source>
        <translation>%1 hinzufügen</translation>
    </message>
    <message>
        <source>Remove %1</source>
        <translation>%1 entfernen</translation>
    </message>
    <message>
        <source>Duplicate %1</source>
        <translation>%1 verdoppeln</translation>
    </message>
    <message>
        <source>Move %1</source>
        <translation>%1 verschieben</translation>
    </message>
    <message>
        <source>Switch %1 off</source>
        <translation>%1 ausschalten</translation>
    </message>
    <message>
        <source>Switch %1 on</source>
        <translation>%1 einschalten</translation>
    </message>
    <message>
        <source>Preset %1 (%2)</source>
        <translation>Vorgabe %1 (%2)</translation>
    </message>
    <message>
        <source>Look %1</source>
        <translation>Look %1</translation>
    </message>
    <message>
        <source>Set %1 to %2 (%3)</source>
        <translation>%1 auf %2 setzen (%3)</translation>
    </message>
    <message>
        <source>Reset %1</source>
        <translation>%1 zurücksetzen</translation>
    </message>
    <message>
        <source>Reset all values</source>
        <translation>Alle Werte zurücksetzen</translation>
    </message>
    <message>
        <source>Set strength to %1 %</source>
        <translation>Stärke auf %1 % setzen</translation>
    </message>
    <message>
        <source>Remove key of %1</source>
        <translation>Schlüssel von %1 entfernen</translation>
    </message>
    <message>
        <source>Add key of %1</source>
        <translation>Schlüssel von %1 setzen</translation>
    </message>
    <message>
        <source>Copy key of %1</source>
        <translation>Schlüssel von %1 kopieren</translation>
    </message>
    <message>
        <source>Move key of %1</source>
        <translation>Schlüssel von %1 verschieben</translation>
    </message>
    <message>
        <source>Copy keys</source>
        <translation>Schlüssel kopieren</translation>
    </message>
    <message>
        <source>Move keys</source>
        <translation>Schlüssel verschieben</translation>
    </message>
    <message>
        <source>Set key of %1 to %2</source>
        <translation>Schlüssel von %1 auf %2 setzen</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::ExportDialog</name>
    <message>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <source>%1 pictures</source>
        <translation>%1-Bilder</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>Wählen…</translation>
    </message>
    <message>
        <source>The whole clip, %1</source>
        <translation>Der ganze Clip, %1</translation>
    </message>
    <message>
        <source>From In to Out, %1 to %2</source>
        <translation>Von In bis Out, %1 bis %2</translation>
    </message>
    <message>
        <source>%1 × %2</source>
        <translation>%1 × %2</translation>
    </message>
    <message>
        <source>%1, as the clip</source>
        <translation>%1, wie der Clip</translation>
    </message>
    <message>
        <source>Effects work at the clip&apos;s size; what they make is scaled.</source>
        <translation>Effekte rechnen in der Größe des Clips; ihr Ergebnis wird skaliert.</translation>
    </message>
    <message>
        <source>Keep transparency</source>
        <translation>Transparenz behalten</translation>
    </message>
    <message>
        <source>Processor</source>
        <translation>Prozessor</translation>
    </message>
    <message>
        <source>OpenGL</source>
        <translation>OpenGL</translation>
    </message>
    <message>
        <source>The two draw other noise; choose the one that you looked at.</source>
        <translation>Beide zeichnen anderes Rauschen; wählen Sie, was Sie gesehen haben.</translation>
    </message>
    <message>
        <source>&amp;Format:</source>
        <translation>&amp;Format:</translation>
    </message>
    <message>
        <source>&amp;To:</source>
        <translation>&amp;Nach:</translation>
    </message>
    <message>
        <source>&amp;Range:</source>
        <translation>&amp;Bereich:</translation>
    </message>
    <message>
        <source>&amp;Size:</source>
        <translation>&amp;Größe:</translation>
    </message>
    <message>
        <source>&amp;Bits a sample:</source>
        <translation>B&amp;its je Wert:</translation>
    </message>
    <message>
        <source>&amp;Quality:</source>
        <translation>&amp;Qualität:</translation>
    </message>
    <message>
        <source>R&amp;enderer:</source>
        <translation>Berechnet &amp;von:</translation>
    </message>
    <message>
        <source>Copy as Command Line</source>
        <translation>Als Befehlszeile kopieren</translation>
    </message>
    <message>
        <source>Add to Queue</source>
        <translation>In die Warteschlange</translation>
    </message>
    <message>
        <source>As the clip, %1</source>
        <translation>Wie der Clip, %1</translation>
    </message>
    <message>
        <source>Export to</source>
        <translation>Exportieren nach</translation>
    </message>
    <message>
        <source>That is the clip itself.</source>
        <translation>Das ist der Clip selbst.</translation>
    </message>
    <message>
        <source>The line is on the clipboard.</source>
        <translation>Die Zeile ist in der Zwischenablage.</translation>
    </message>
    <message>
        <source>There is no folder &quot;%1&quot;.</source>
        <translation>Es gibt keinen Ordner „%1“.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is there already and will be replaced.</source>
        <translation>„%1“ gibt es schon und wird ersetzt.</translation>
    </message>
    <message>
        <source>An effect is set to show its mask, and the mask is what will be exported.</source>
        <translation>Ein Effekt zeigt seine Maske, und die Maske würde exportiert.</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::ExportQueue</name>
    <message>
        <source>The processor renders instead.</source>
        <translation>Stattdessen rechnet der Prozessor.</translation>
    </message>
    <message>
        <source>The processor renders it instead.</source>
        <translation>Stattdessen berechnet ihn der Prozessor.</translation>
    </message>
    <message>
        <source>There is not enough memory.</source>
        <translation>Der Speicher reicht nicht.</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::MainWindow</name>
    <message>
        <source>&amp;New Look</source>
        <translation>&amp;Neuer Look</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>Ö&amp;ffnen…</translation>
    </message>
    <message>
        <source>Open the Built-in &amp;Scene</source>
        <translation>Eingebaute S&amp;zene öffnen</translation>
    </message>
    <message>
        <source>&amp;Save Look</source>
        <translation>Look &amp;speichern</translation>
    </message>
    <message>
        <source>Save Look &amp;As…</source>
        <translation>Look speichern &amp;unter…</translation>
    </message>
    <message>
        <source>Save Preset File…</source>
        <translation>Vorgabedatei speichern…</translation>
    </message>
    <message>
        <source>Save This &amp;Frame…</source>
        <translation>Dieses &amp;Bild speichern…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Export…</source>
        <translation>&amp;Exportieren…</translation>
    </message>
    <message>
        <source>&amp;Queue…</source>
        <translation>&amp;Warteschlange…</translation>
    </message>
    <message>
        <source>&amp;Copy as Command Line</source>
        <translation>Als Befehlszeile &amp;kopieren</translation>
    </message>
    <message>
        <source>Copy as &amp;ffmpeg Line</source>
        <translation>Als Zeile für &amp;ffmpeg kopieren</translation>
    </message>
    <message>
        <source>Copy as &amp;melt Line</source>
        <translation>Als Zeile für &amp;melt kopieren</translation>
    </message>
    <message>
        <source>&amp;About Lumiset Studio</source>
        <translation>Ü&amp;ber Lumiset Studio</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>&amp;Copy Effect</source>
        <translation>Effekt &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;Paste Effect</source>
        <translation>Effekt &amp;einfügen</translation>
    </message>
    <message>
        <source>&amp;Duplicate Effect</source>
        <translation>Effekt &amp;verdoppeln</translation>
    </message>
    <message>
        <source>&amp;Remove Effect</source>
        <translation>Effekt en&amp;tfernen</translation>
    </message>
    <message>
        <source>Effect &amp;On or Off</source>
        <translation>Effekt ein &amp;oder aus</translation>
    </message>
    <message>
        <source>Move Effect &amp;Up</source>
        <translation>Effekt nach o&amp;ben</translation>
    </message>
    <message>
        <source>Move Effect Dow&amp;n</source>
        <translation>Effekt nach u&amp;nten</translation>
    </message>
    <message>
        <source>Reset All &amp;Values</source>
        <translation>Alle &amp;Werte zurücksetzen</translation>
    </message>
    <message>
        <source>&amp;Find a Preset</source>
        <translation>Vorgabe &amp;suchen</translation>
    </message>
    <message>
        <source>&amp;Fit</source>
        <translation>&amp;Einpassen</translation>
    </message>
    <message>
        <source>&amp;100 %</source>
        <translation>&amp;100 %</translation>
    </message>
    <message>
        <source>&amp;200 %</source>
        <translation>&amp;200 %</translation>
    </message>
    <message>
        <source>&amp;Compare: Wipe, Side by Side, Off</source>
        <translation>&amp;Vergleich: Wischen, nebeneinander, aus</translation>
    </message>
    <message>
        <source>Take &amp;Snapshot to Compare With</source>
        <translation>&amp;Stand zum Vergleichen festhalten</translation>
    </message>
    <message>
        <source>Compare with the S&amp;ource</source>
        <translation>Mit dem &amp;Original vergleichen</translation>
    </message>
    <message>
        <source>Compare with the Sna&amp;pshot</source>
        <translation>Mit dem &amp;festgehaltenen Stand vergleichen</translation>
    </message>
    <message>
        <source>Compare with the Look &amp;Without This Effect</source>
        <translation>Mit dem Look &amp;ohne diesen Effekt vergleichen</translation>
    </message>
    <message>
        <source>C&amp;urve</source>
        <translation>&amp;Kurve</translation>
    </message>
    <message>
        <source>&amp;Picture Only</source>
        <translation>&amp;Nur das Bild</translation>
    </message>
    <message>
        <source>F&amp;ull Screen</source>
        <translation>Vollb&amp;ild</translation>
    </message>
    <message>
        <source>Render in Open&amp;GL</source>
        <translation>In Open&amp;GL berechnen</translation>
    </message>
    <message>
        <source>OpenGL renders now. Its noise differs from the processor&apos;s, so export with the one that you looked at.</source>
        <translation>Jetzt rechnet OpenGL. Sein Rauschen ist ein anderes als das des Prozessors; exportieren Sie mit dem, was Sie gesehen haben.</translation>
    </message>
    <message>
        <source>&amp;Both Fields</source>
        <translation>&amp;Beide Halbbilder</translation>
    </message>
    <message>
        <source>First Field A&amp;lone</source>
        <translation>&amp;Erstes Halbbild allein</translation>
    </message>
    <message>
        <source>S&amp;econd Field Alone</source>
        <translation>&amp;Zweites Halbbild allein</translation>
    </message>
    <message>
        <source>System Colours</source>
        <translation>Farben des Systems</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Hell</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Dunkel</translation>
    </message>
    <message>
        <source>&amp;Play or Stop</source>
        <translation>Abs&amp;pielen oder anhalten</translation>
    </message>
    <message>
        <source>Play &amp;Backwards, Again Faster</source>
        <translation>&amp;Rückwärts, noch einmal: schneller</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Anhalten</translation>
    </message>
    <message>
        <source>Play &amp;Forwards, Again Faster</source>
        <translation>&amp;Vorwärts, noch einmal: schneller</translation>
    </message>
    <message>
        <source>Frame B&amp;ack</source>
        <translation>Ein Bild &amp;zurück</translation>
    </message>
    <message>
        <source>Frame F&amp;orward</source>
        <translation>Ein Bild v&amp;or</translation>
    </message>
    <message>
        <source>Second Back</source>
        <translation>Eine Sekunde zurück</translation>
    </message>
    <message>
        <source>Second Forward</source>
        <translation>Eine Sekunde vor</translation>
    </message>
    <message>
        <source>To &amp;In</source>
        <translation>Zum &amp;In-Punkt</translation>
    </message>
    <message>
        <source>To &amp;Out</source>
        <translation>Zum O&amp;ut-Punkt</translation>
    </message>
    <message>
        <source>Set I&amp;n</source>
        <translation>I&amp;n-Punkt setzen</translation>
    </message>
    <message>
        <source>Set O&amp;ut</source>
        <translation>Ou&amp;t-Punkt setzen</translation>
    </message>
    <message>
        <source>&amp;Clear In and Out</source>
        <translation>In- und Out-Punkt &amp;löschen</translation>
    </message>
    <message>
        <source>Previous &amp;Key</source>
        <translation>Voriger &amp;Schlüssel</translation>
    </message>
    <message>
        <source>Ne&amp;xt Key</source>
        <translation>Nä&amp;chster Schlüssel</translation>
    </message>
    <message>
        <source>&amp;Loop</source>
        <translation>Sch&amp;leife</translation>
    </message>
    <message>
        <source>&amp;Mute</source>
        <translation>Stu&amp;mm</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>&amp;Zuletzt geöffnet</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Add Effect</source>
        <translation>Effekt &amp;hinzufügen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>Hold \ for the Source</source>
        <translation>\ gehalten: das Original</translation>
    </message>
    <message>
        <source>Hold M for the Effect&apos;s Mask</source>
        <translation>M gehalten: die Maske des Effekts</translation>
    </message>
    <message>
        <source>F&amp;ields of Interlaced Clips</source>
        <translation>&amp;Halbbilder</translation>
    </message>
    <message>
        <source>&amp;Colours</source>
        <translation>Far&amp;ben</translation>
    </message>
    <message>
        <source>&amp;Playback</source>
        <translation>&amp;Wiedergabe</translation>
    </message>
    <message>
        <source>E&amp;xport</source>
        <translation>E&amp;xport</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Clips, pictures, looks and presets (*.*)</source>
        <translation>Clips, Bilder, Looks und Vorgaben (*.*)</translation>
    </message>
    <message>
        <source>Looks (*.lumilook)</source>
        <translation>Looks (*.lumilook)</translation>
    </message>
    <message>
        <source>Preset files (*.lumv*)</source>
        <translation>Vorgabedateien (*.lumv*)</translation>
    </message>
    <message>
        <source>Save Look</source>
        <translation>Look speichern</translation>
    </message>
    <message>
        <source>Save Preset File</source>
        <translation>Vorgabedatei speichern</translation>
    </message>
    <message>
        <source>Presets of %1 (*%2)</source>
        <translation>Vorgaben von %1 (*%2)</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>%1 ist gespeichert</translation>
    </message>
    <message>
        <source>Save This Frame</source>
        <translation>Dieses Bild speichern</translation>
    </message>
    <message>
        <source>Pictures (*.png *.jpg *.tif *.webp)</source>
        <translation>Bilder (*.png *.jpg *.tif *.webp)</translation>
    </message>
    <message>
        <source>The line is on the clipboard: %1</source>
        <translation>Die Zeile ist in der Zwischenablage: %1</translation>
    </message>
    <message>
        <source>The line is on the clipboard. It renders the whole clip: %1</source>
        <translation>Die Zeile ist in der Zwischenablage. Sie berechnet den ganzen Clip: %1</translation>
    </message>
    <message>
        <source>Paste %1</source>
        <translation>%1 einfügen</translation>
    </message>
    <message>
        <source>There is no effect on the clipboard.</source>
        <translation>In der Zwischenablage ist kein Effekt.</translation>
    </message>
    <message>
        <source>These are %1 clips. The first one is open; the look can go on all of them.</source>
        <translation>Das sind %1 Clips. Der erste ist offen; der Look kann auf alle.</translation>
    </message>
    <message>
        <source>Export All with This Look</source>
        <translation>Alle mit diesem Look exportieren</translation>
    </message>
    <message>
        <source>The clip of this look is not there any more: %1</source>
        <translation>Der Clip dieses Looks ist nicht mehr da: %1</translation>
    </message>
    <message>
        <source>Find…</source>
        <translation>Suchen…</translation>
    </message>
    <message>
        <source>Find %1</source>
        <translation>%1 suchen</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>This picture is one of a numbered series.</source>
        <translation>Dieses Bild gehört zu einer nummerierten Reihe.</translation>
    </message>
    <message>
        <source>Open All as a Clip</source>
        <translation>Alle als Clip öffnen</translation>
    </message>
    <message>
        <source>The program ended before &quot;%1&quot; was saved.</source>
        <translation>Das Programm endete, bevor „%1“ gespeichert war.</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Save the changes of &quot;%1&quot;?</source>
        <translation>Die Änderungen an „%1“ speichern?</translation>
    </message>
    <message>
        <source>About Lumiset Studio</source>
        <translation>Über Lumiset Studio</translation>
    </message>
    <message>
        <source>&lt;b&gt;Lumiset Studio %1&lt;/b&gt;&lt;br&gt;Video effects to see, drag and keep.</source>
        <translation>&lt;b&gt;Lumiset Studio %1&lt;/b&gt;&lt;br&gt;Videoeffekte zum Sehen, Ziehen und Behalten.</translation>
    </message>
    <message>
        <source>Pictures are shown in their own coded values; what you see at full size is what is exported, byte for byte. Noise differs between the processor and OpenGL, so export with the one that you looked at.</source>
        <translation>Bilder werden mit den Werten gezeigt, mit denen sie kodiert sind; was in voller Größe zu sehen ist, wird exportiert, Byte für Byte. Das Rauschen von Prozessor und OpenGL ist verschieden; exportieren Sie mit dem, was Sie gesehen haben.</translation>
    </message>
    <message>
        <source>Try OpenGL Again</source>
        <translation>OpenGL noch einmal versuchen</translation>
    </message>
    <message>
        <source>Exported to %1</source>
        <translation>Exportiert nach %1</translation>
    </message>
    <message>
        <source>Queue</source>
        <translation>Warteschlange</translation>
    </message>
    <message>
        <source>Export failed. %1</source>
        <translation>Der Export ist gescheitert. %1</translation>
    </message>
    <message>
        <source>Effects</source>
        <translation>Effekte</translation>
    </message>
    <message>
        <source>Add an effect</source>
        <translation>Effekt hinzufügen</translation>
    </message>
    <message>
        <source>Clips are still being exported.</source>
        <translation>Es werden noch Clips exportiert.</translation>
    </message>
    <message>
        <source>Cancel Exports and Close</source>
        <translation>Export abbrechen und schließen</translation>
    </message>
    <message>
        <source>Show Queue</source>
        <translation>Warteschlange zeigen</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::MessageBar</name>
    <message>
        <source>Close the message</source>
        <translation>Meldung schließen</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Hinweis</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::Panel</name>
    <message>
        <source>Settings of the effect</source>
        <translation>Einstellungen des Effekts</translation>
    </message>
    <message>
        <source>Add an effect with the plus above,
or choose a look below.</source>
        <translation>Oben mit dem Plus einen Effekt hinzufügen,
oder unten einen Look wählen.</translation>
    </message>
    <message>
        <source>Group %1</source>
        <translation>Gruppe %1</translation>
    </message>
    <message>
        <source>How much of this effect shows over its source</source>
        <translation>Wie viel von diesem Effekt zu sehen ist</translation>
    </message>
    <message>
        <source>Strength</source>
        <translation>Stärke</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::ParameterRow</name>
    <message>
        <source>Key</source>
        <translation>Schlüssel</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Back to the preset</source>
        <translation>Zurück zur Vorgabe</translation>
    </message>
    <message>
        <source>Pick from the picture:</source>
        <translation>Aus dem Bild nehmen:</translation>
    </message>
    <message>
        <source>Pick from the picture</source>
        <translation>Aus dem Bild nehmen</translation>
    </message>
    <message>
        <source>Remove the key of this moment</source>
        <translation>Den Schlüssel hier entfernen</translation>
    </message>
    <message>
        <source>Add a key at this moment</source>
        <translation>Hier einen Schlüssel setzen</translation>
    </message>
    <message>
        <source>Reset %1</source>
        <translation>%1 zurücksetzen</translation>
    </message>
    <message>
        <source>Reset All Values</source>
        <translation>Alle Werte zurücksetzen</translation>
    </message>
    <message>
        <source>Show Curve</source>
        <translation>Kurve zeigen</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::QueueWindow</name>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1:%2 min</source>
        <translation>%1:%2 min</translation>
    </message>
    <message>
        <source>Export Queue</source>
        <translation>Warteschlange</translation>
    </message>
    <message>
        <source>Remove Finished</source>
        <translation>Fertige entfernen</translation>
    </message>
    <message>
        <source>%1, %2, %3</source>
        <translation>%1, %2, %3</translation>
    </message>
    <message>
        <source>OpenGL</source>
        <translation>OpenGL</translation>
    </message>
    <message>
        <source>processor</source>
        <translation>Prozessor</translation>
    </message>
    <message>
        <source>, %1 × %2</source>
        <translation>, %1 × %2</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Show Folder</source>
        <translation>Ordner zeigen</translation>
    </message>
    <message>
        <source>Waiting</source>
        <translation>Wartet</translation>
    </message>
    <message>
        <source>%1 of %2 frames</source>
        <translation>%1 von %2 Bildern</translation>
    </message>
    <message>
        <source>, %1 left</source>
        <translation>, noch %1</translation>
    </message>
    <message>
        <source>Done. </source>
        <translation>Fertig. </translation>
    </message>
    <message>
        <source>Failed: %1</source>
        <translation>Gescheitert: %1</translation>
    </message>
    <message>
        <source>Cancelled; nothing was written</source>
        <translation>Abgebrochen; nichts wurde geschrieben</translation>
    </message>
    <message>
        <source>Nothing is waiting</source>
        <translation>Nichts wartet</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>Angehalten</translation>
    </message>
    <message>
        <source>More than %1 left in all</source>
        <translation>Im Ganzen noch mehr als %1</translation>
    </message>
    <message>
        <source>%1 left in all</source>
        <translation>Im Ganzen noch %1</translation>
    </message>
    <message>
        <source>Exporting…</source>
        <translation>Exportiert…</translation>
    </message>
    <message>
        <source>Resume</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::StackModel</name>
    <message>
        <source>Defaults</source>
        <translation>Grundwerte</translation>
    </message>
    <message>
        <source>%1 (changed)</source>
        <translation>%1 (geändert)</translation>
    </message>
    <message>
        <source>off</source>
        <translation>aus</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::StackView</name>
    <message>
        <source>Effects</source>
        <translation>Effekte</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::Strip</name>
    <message>
        <source>Looks</source>
        <translation>Looks</translation>
    </message>
    <message>
        <source>This Effect</source>
        <translation>Dieser Effekt</translation>
    </message>
    <message>
        <source>All %1 Presets</source>
        <translation>Alle %1 Vorgaben</translation>
    </message>
    <message>
        <source>What the pictures show</source>
        <translation>Was die Bilder zeigen</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Search for a look or preset</source>
        <translation>Einen Look oder eine Vorgabe suchen</translation>
    </message>
    <message>
        <source>Looks and presets</source>
        <translation>Looks und Vorgaben</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::Studio</name>
    <message>
        <source>Add %1: %2</source>
        <translation>%1 hinzufügen: %2</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::Thumbnails</name>
    <message>
        <source>Add %1: %2</source>
        <translation>%1 hinzufügen: %2</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::Timeline</name>
    <message>
        <source>Position in the clip</source>
        <translation>Stelle im Clip</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::Transport</name>
    <message>
        <source>Time code</source>
        <translation>Zeitcode</translation>
    </message>
    <message>
        <source>What the viewer reaches</source>
        <translation>Was die Ansicht erreicht</translation>
    </message>
    <message>
        <source>, OpenGL</source>
        <translation>, OpenGL</translation>
    </message>
    <message>
        <source>%1 of %2 fps</source>
        <translation>%1 von %2 Bildern/s</translation>
    </message>
    <message>
        <source>%1 × %2, %3 fps</source>
        <translation>%1 × %2, %3 Bilder/s</translation>
    </message>
    <message>
        <source>, %1 ms</source>
        <translation>, %1 ms</translation>
    </message>
</context>
<context>
    <name>lumiset::studio::Viewer</name>
    <message>
        <source>Picture</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Opening…</source>
        <translation>Wird geöffnet…</translation>
    </message>
    <message>
        <source>Rendering…</source>
        <translation>Wird berechnet…</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>Original</translation>
    </message>
    <message>
        <source>Snapshot</source>
        <translation>Festgehalten</translation>
    </message>
    <message>
        <source>Without this effect</source>
        <translation>Ohne diesen Effekt</translation>
    </message>
    <message>
        <source>Look</source>
        <translation>Look</translation>
    </message>
    <message>
        <source>½ size</source>
        <translation>½ Größe</translation>
    </message>
    <message>
        <source>¼ size</source>
        <translation>¼ Größe</translation>
    </message>
    <message>
        <source>Click a colour in the picture; Esc ends</source>
        <translation>Auf eine Farbe im Bild klicken; Esc bricht ab</translation>
    </message>
</context>
</TS>
