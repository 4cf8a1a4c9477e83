// SPDX-License-Identifier: MIT

import java.awt.BorderLayout;
import java.awt.event.FocusAdapter;
import java.awt.event.FocusEvent;
import java.io.BufferedReader;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.InputStreamReader;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.HashMap;
import java.util.Map;
import javax.swing.JFrame;
import javax.swing.JScrollPane;
import javax.swing.JTextArea;
import javax.swing.SwingUtilities;
import javax.swing.event.DocumentEvent;
import javax.swing.event.DocumentListener;

/**
 * A Swing window with one text area. Prints "ready" when the area gets the focus. The options --title, --out and
 * --journal are those of target_options.py. The commands on standard input are "publish", "clear" and "quit".
 */
final class SwingTarget {
    private final Map<String, String> options = new HashMap<>();
    private final JTextArea area = new JTextArea(8, 40);
    private FileOutputStream journal;

    public static void main(String[] arguments) throws Exception {
        SwingTarget target = new SwingTarget();
        for (int index = 0; index + 1 < arguments.length; index += 2) {
            target.options.put(arguments[index], arguments[index + 1]);
        }
        if (target.options.containsKey("--journal")) {
            target.journal = new FileOutputStream(target.options.get("--journal"), true);
        }
        target.publish();
        SwingUtilities.invokeLater(target::show);
        BufferedReader commands = new BufferedReader(new InputStreamReader(System.in));
        for (String line = commands.readLine(); line != null; line = commands.readLine()) {
            String command = line;
            SwingUtilities.invokeAndWait(() -> target.handle(command));
        }
    }

    private void show() {
        JFrame frame = new JFrame(options.get("--title"));
        frame.setDefaultCloseOperation(JFrame.EXIT_ON_CLOSE);
        frame.add(new JScrollPane(area), BorderLayout.CENTER);
        area.setLineWrap(true);
        area.getDocument().addDocumentListener(new DocumentListener() {
            @Override
            public void insertUpdate(DocumentEvent event) {
                changed();
            }

            @Override
            public void removeUpdate(DocumentEvent event) {
                changed();
            }

            @Override
            public void changedUpdate(DocumentEvent event) {}
        });
        area.addFocusListener(new FocusAdapter() {
            @Override
            public void focusGained(FocusEvent event) {
                announce("ready");
            }
        });
        frame.pack();
        frame.setVisible(true);
        area.requestFocusInWindow();
    }

    private void handle(String command) {
        switch (command) {
            case "publish" -> publish();
            case "clear" -> area.setText("");
            case "quit" -> System.exit(0);
            default -> {}
        }
        announce("done");
    }

    /** The clock is CLOCK_MONOTONIC on Linux. The length is in UTF-16 units. */
    private void changed() {
        if (journal == null) {
            publish();
            return;
        }
        String line = "changed " + System.nanoTime() + " " + area.getDocument().getLength() + "\n";
        try {
            journal.write(line.getBytes(StandardCharsets.UTF_8));
        } catch (IOException error) {
            throw new IllegalStateException(error);
        }
    }

    private void publish() {
        Path file = Path.of(options.get("--out"));
        Path partial = Path.of(options.get("--out") + ".partial");
        try {
            Files.writeString(partial, area.getText());
            Files.move(partial, file, StandardCopyOption.ATOMIC_MOVE);
        } catch (IOException error) {
            throw new IllegalStateException(error);
        }
    }

    private static void announce(String line) {
        System.out.println(line);
        System.out.flush();
    }
}
