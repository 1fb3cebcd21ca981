package com.android.tools.r8;

import java.io.File;
import java.io.FileOutputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.List;
import java.util.zip.ZipEntry;
import java.util.zip.ZipFile;
import java.util.zip.ZipOutputStream;

/**
 * Stands in for the compiler of DEX files. Checks its command line, and makes a classes.dex that
 * begins as a real one does and goes on with the names of the classes.
 */
public class D8 {
    private static final List<String> classes = new ArrayList<>();

    private static void require(boolean condition, String what) {
        if (!condition) {
            System.err.println("d8: " + what);
            System.exit(1);
        }
    }

    private static void take(String file) throws Exception {
        require(new File(file).isFile(), "there is no " + file);
        if (file.endsWith(".class")) {
            classes.add(new File(file).getName());
            return;
        }
        require(file.endsWith(".jar"), "unsupported " + file);
        try (ZipFile archive = new ZipFile(file)) {
            archive.stream().map(ZipEntry::getName).filter(n -> n.endsWith(".class"))
                .forEach(classes::add);
        }
    }

    public static void main(String[] arguments) throws Exception {
        String output = null;
        String library = null;
        for (int i = 0; i < arguments.length; ++i) {
            String argument = arguments[i];
            if (argument.equals("--output")) {
                output = arguments[++i];
            } else if (argument.equals("--lib")) {
                library = arguments[++i];
            } else if (argument.equals("--min-api")) {
                Integer.parseInt(arguments[++i]);
            } else if (argument.startsWith("@")) {
                for (String file : Files.readAllLines(new File(argument.substring(1)).toPath())) {
                    take(file);
                }
            } else {
                require(argument.equals("--release") || argument.equals("--debug"),
                        "unknown option " + argument);
            }
        }
        require(library != null && new File(library).isFile(), "no library");
        require(output != null && output.endsWith(".zip"), "no output");
        require(!classes.isEmpty(), "no class");
        classes.sort(null);
        try (ZipOutputStream zip = new ZipOutputStream(new FileOutputStream(output))) {
            zip.putNextEntry(new ZipEntry("classes.dex"));
            zip.write(("dex\n035\0" + String.join(" ", classes)).getBytes(StandardCharsets.UTF_8));
        }
    }
}
